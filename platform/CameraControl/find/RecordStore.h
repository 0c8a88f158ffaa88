// Where the records of OV_CC_EnumDevices live.
//
// Each thread has a store of its own, so that two threads that enumerate at the same time never touch one
// another's records. A store is never freed: when its thread ends it goes to the end of a queue, and a thread
// that comes later takes the one that has waited longest. So a list that outlives its thread still points to
// memory that is ours, and there are never more stores than there were threads enumerating at one time.
#ifndef KOLT_CAMERA_CONTROL_RECORD_STORE_H
#define KOLT_CAMERA_CONTROL_RECORD_STORE_H

#include <cstddef>
#include <vector>

#include "Camera/Boundary/OvCameraControl.h"

namespace kolt::cc {

// Puts up to OV_MAX_DEVICES records into the calling thread's store, and pointers to them into the list.
void publishRecords(const std::vector<_OV_CC_DEVICE_INFO_>& records, _OV_CC_DEVICE_INFO_LIST_& list);

// How many stores exist.
std::size_t recordStoreCount();

} // namespace kolt::cc

#endif
