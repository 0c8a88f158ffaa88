#include "device/FeatureMap.h"

#include <exception>
#include <new>
#include <string>
#include <utility>

#include <pugixml.hpp>

#include "Camera/Boundary/OvStatus.h"
#include "GenApi/GenApi.h"
#include "device/TransportDevice.h"

namespace kolt::cc {

namespace {

template<class Kind>
bool is(const std::exception& exception) {
    return dynamic_cast<const Kind*>(&exception) != nullptr;
}

class DevicePort final : public GenApi_3_0::IPort {
public:
    explicit DevicePort(TransportDevice& device) : device_(device) {}

    GenApi_3_0::EAccessMode GetAccessMode() const override { return GenApi_3_0::RW; }
    void Read(void* buffer, int64_t address, int64_t length) override {
        check(device_.readMemory(static_cast<std::uint64_t>(address), static_cast<std::uint8_t*>(buffer),
                                 static_cast<std::size_t>(length)));
    }
    void Write(const void* buffer, int64_t address, int64_t length) override {
        check(device_.writeMemory(static_cast<std::uint64_t>(address),
                                  static_cast<const std::uint8_t*>(buffer),
                                  static_cast<std::size_t>(length)));
    }
    // What the device said to the last access.
    std::uint32_t lastStatus() const { return lastStatus_; }
    void forget() { lastStatus_ = OV_STATUS_OK; }

private:
    void check(std::uint32_t status) {
        lastStatus_ = status;
        if (status != OV_STATUS_OK) {
            throw RUNTIME_EXCEPTION("the device does not take the access (status 0x%08x)", status);
        }
    }

    TransportDevice& device_;
    std::uint32_t lastStatus_ = OV_STATUS_OK;
};

} // namespace

std::uint32_t statusOfException(const std::exception& exception) {
    using namespace GenICam_3_0;
    using Row = std::pair<bool (*)(const std::exception&), std::uint32_t>;
    static constexpr Row kRows[] = {
        {is<InvalidArgumentException>, OV_STATUS_GENICAM_ARGUMENT},
        {is<OutOfRangeException>, OV_STATUS_GENICAM_RANGE},
        {is<PropertyException>, OV_STATUS_GENICAM_PROPERTY},
        {is<RuntimeException>, OV_STATUS_GENICAM_RUNTIME},
        {is<LogicalErrorException>, OV_STATUS_GENICAM_LOGICAL},
        {is<AccessException>, OV_STATUS_GENICAM_ACCESS},
        {is<TimeoutException>, OV_STATUS_GENICAM_TIMEOUT},
        {is<DynamicCastException>, OV_STATUS_GENICAM_DYNAMIC_CAST},
        {is<BadAllocException>, OV_STATUS_RESOURCE},
        {is<std::bad_alloc>, OV_STATUS_RESOURCE},
    };
    for (const auto& [matches, status] : kRows) {
        if (matches(exception)) {
            return status;
        }
    }
    return OV_STATUS_GENICAM_GENERIC;
}

bool isWellFormed(const std::vector<std::uint8_t>& xml) {
    pugi::xml_document document;
    return bool(document.load_buffer(xml.data(), xml.size(), pugi::parse_minimal)) &&
           !document.document_element().empty();
}

class FeatureMap::Nodes {
public:
    Nodes(TransportDevice& device, const std::vector<std::uint8_t>& xml) : port_(device), map_("Device") {
        map_._LoadXMLFromString(std::string(xml.begin(), xml.end()).c_str());
        map_._Connect(&port_, "Device");
    }

    // Nothing read before is believed: other node maps write to the camera as well.
    GenApi_3_0::INode* fresh(const char* name) {
        port_.forget();
        map_._InvalidateNodes();
        return map_._GetNode(name);
    }
    std::uint32_t lastStatus() const { return port_.lastStatus(); }

private:
    DevicePort port_;
    GenApi_3_0::CNodeMapRef map_;
};

FeatureMap::FeatureMap(TransportDevice& device, const std::vector<std::uint8_t>& xml)
    : device_(device), xml_(xml) {}

FeatureMap::~FeatureMap() = default;

// The device's own word comes first; without one it is the description that is at fault.
template<class F>
std::uint32_t FeatureMap::guarded(F&& body) {
    try {
        if (!nodes_) {
            nodes_ = std::make_unique<Nodes>(device_, xml_);
        }
        return body(*nodes_);
    } catch (const std::exception& exception) {
        const std::uint32_t said = nodes_ ? nodes_->lastStatus() : OV_STATUS_OK;
        return said != OV_STATUS_OK ? said : statusOfException(exception);
    }
}

std::uint32_t FeatureMap::integer(const char* name, std::int64_t& value) {
    return guarded([&](Nodes& nodes) {
        GenApi_3_0::INode* node = nodes.fresh(name);
        if (const GenApi_3_0::CIntegerPtr number = node) {
            value = number->GetValue();
        } else if (const GenApi_3_0::CEnumerationPtr choice = node) {
            value = choice->GetIntValue();
        } else {
            return OV_STATUS_NOT_SUPPORTED;
        }
        return OV_STATUS_OK;
    });
}

std::uint32_t FeatureMap::execute(const char* command) {
    return guarded([&](Nodes& nodes) {
        const GenApi_3_0::CCommandPtr node = nodes.fresh(command);
        if (!node) {
            return OV_STATUS_NOT_SUPPORTED;
        }
        node->Execute();
        return OV_STATUS_OK;
    });
}

} // namespace kolt::cc
