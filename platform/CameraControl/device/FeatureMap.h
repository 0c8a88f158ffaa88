// The few features of a camera that streaming needs, by its own XML.
//
// Aravis has a node map too, but one that recurses without end where nodes refer to one another in a circle,
// and that takes locked and missing nodes for usable ones; so the library's own evaluates them.
#ifndef KOLT_CAMERA_CONTROL_FEATURE_MAP_H
#define KOLT_CAMERA_CONTROL_FEATURE_MAP_H

#include <cstdint>
#include <memory>
#include <vector>

namespace kolt::cc {

class TransportDevice;

// True when the text is well-formed XML as far as its elements go.
bool isWellFormed(const std::vector<std::uint8_t>& xml);

// One for each class of GenICam exceptions; OV_STATUS_RESOURCE where memory is short,
// OV_STATUS_GENICAM_GENERIC for all else.
std::uint32_t statusOfException(const std::exception& exception);

// One thread at a time: the device's. Statuses: OV_STATUS_NOT_SUPPORTED where the camera has no such feature,
// one of OV_STATUS_GENICAM_* where its description can't be evaluated, else what the device answers.
class FeatureMap {
public:
    // Reads registers of the device, which must outlive the map. xml is loaded at the first use.
    FeatureMap(TransportDevice& device, const std::vector<std::uint8_t>& xml);
    ~FeatureMap();
    FeatureMap(const FeatureMap&) = delete;
    FeatureMap& operator=(const FeatureMap&) = delete;

    // As it is on the device now. An enumeration gives its number.
    std::uint32_t integer(const char* name, std::int64_t& value);
    std::uint32_t execute(const char* command);

private:
    class Nodes;
    template<class F>
    std::uint32_t guarded(F&& body);

    TransportDevice& device_;
    const std::vector<std::uint8_t>& xml_;
    std::unique_ptr<Nodes> nodes_;
};

} // namespace kolt::cc

#endif
