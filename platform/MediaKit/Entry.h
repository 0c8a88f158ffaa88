#ifndef MEDIA_ENTRY_H
#define MEDIA_ENTRY_H

#include "Camera/Boundary/OvStatus.h"
#include "MediaKit/HandleRegistry.h"

#include <cstdint>
#include <memory>
#include <new>

namespace media {

/*
 * What all exported calls with a record do first and last: find the handle, refuse a null record, take a
 * workspace, and turn a failed allocation into a status. work(Workspace&, Record&) gives the call's status.
 */
template<typename Record, typename Work>
std::uint32_t WithWorkspace(void* handle, Record* record, Work&& work) {
    const std::shared_ptr<MediaHandle> living = HandleRegistry::Instance().Find(handle);
    if (!living) {
        return OV_STATUS_INVALID_HANDLE;
    }
    if (record == nullptr) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    try {
        const MediaHandle::Lease workspace(*living);
        return work(*workspace, *record);
    } catch (const std::bad_alloc&) {
        return OV_STATUS_RESOURCE;
    }
}

} // namespace media

#endif
