// A camera's device model in this process and our node map on its registers: no network, no time, every
// register at hand.
#ifndef KOLT_TESTS_VCAM_FEATURERIG_H
#define KOLT_TESTS_VCAM_FEATURERIG_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Base/GCException.h"
#include "Device/DeviceModel.h"
#include "GenApi/GenApi.h"

namespace kolt::test {

// The device's registers as its client reaches them: with access rights and checks.
class RegisterPort : public GenApi_3_0::IPort {
public:
    explicit RegisterPort(vcam::RegisterMemory& memory) : m_memory(memory) {}
    GenApi_3_0::EAccessMode GetAccessMode() const override { return GenApi_3_0::RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

private:
    vcam::RegisterMemory& m_memory;
};

// Takes the device's orders down.
class OrderBook : public vcam::StreamControl {
public:
    void StartAcquisition() override { acquiring = true; }
    void StopAcquisition() override { acquiring = false; }
    void AbortAcquisition() override { acquiring = false; }
    void SettingsChanged() override { ++changes; }
    void FrameTrigger(double exposureUs) override { frames.push_back(exposureUs); }
    void AcquisitionTrigger() override { ++acquisitions; }
    void FireTestPacket() override { ++testPackets; }
    bool IsAcquiring() const override { return acquiring; }

    bool acquiring = false;
    unsigned changes = 0;
    std::vector<double> frames; // exposures of the frame triggers
    unsigned acquisitions = 0;
    unsigned testPackets = 0;
};

class FeatureRig {
public:
    explicit FeatureRig(const vcam::Config& config = {},
                        std::shared_ptr<vcam::Flash> flash = std::make_shared<vcam::Flash>());
    explicit FeatureRig(vcam::Model kind) : FeatureRig(Of(kind)) {}

    static vcam::Config Of(vcam::Model kind) {
        vcam::Config config;
        config.model = kind;
        return config;
    }

    // By the node map. They throw what it throws; a name that isn't there, or is no such feature, throws
    // std::invalid_argument.
    std::int64_t Int(const std::string& name) const;
    double Real(const std::string& name) const;
    std::string Text(const std::string& name) const;
    void Set(const std::string& name, std::int64_t value); // integers, booleans, enumerations
    void SetReal(const std::string& name, double value);
    void SetText(const std::string& name, const std::string& value); // strings, and entries by name
    void Do(const std::string& command);
    GenApi_3_0::EAccessMode Mode(const std::string& name) const;
    GenApi_3_0::INode* Node(const std::string& name) const; // null when there is none

    // Straight at the register, as a client without the XML would.
    vcam::Status Poke(std::uint32_t address, std::uint32_t value);
    vcam::PictureSettings Picture() { return model.Settings().picture; }

    vcam::FaultPanel faults;
    vcam::CounterBoard counters;
    OrderBook stream;
    vcam::DeviceModel model;
    RegisterPort port;
    GenApi_3_0::CNodeMapRef map{"Device"};
};

} // namespace kolt::test

#endif
