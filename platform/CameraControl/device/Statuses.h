// What the libraries below say, as statuses of the contract.
#ifndef KOLT_CAMERA_CONTROL_STATUSES_H
#define KOLT_CAMERA_CONTROL_STATUSES_H

#include <cstdint>

#include <glib.h>

namespace kolt::cc {

// OV_STATUS_OK for null.
std::uint32_t statusFromError(const GError* error);

// The camera answered, be it with a refusal: a sign of life.
bool isAnswer(std::uint32_t status);

} // namespace kolt::cc

#endif
