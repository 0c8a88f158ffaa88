// The registers by which faults are switched and counters read.
#include "Device/DeviceModel.h"
#include "VendorRegisters.h"

namespace vcam {

namespace {

struct NumberFault {
    const char* name;
    uint32_t address;
    uint32_t Faults::*field;
    uint32_t most;
};

constexpr NumberFault kNumbers[] = {
    {"VcamLossPerMille", kVendorLossPerMille, &Faults::lossPerMille, 1000},
    {"VcamAnswerDelayMs", kVendorAnswerDelayMs, &Faults::answerDelayMs, 60000},
    {"VcamChangedWidth", kVendorChangedWidth, &Faults::changedWidth, 16384},
    {"VcamChangedHeight", kVendorChangedHeight, &Faults::changedHeight, 16384},
    {"VcamExtraBytes", kVendorExtraBytes, &Faults::extraBytes, 1u << 24},
    {"VcamDuplicatePerMille", kVendorDuplicatePerMille, &Faults::duplicatePerMille, 1000},
    {"VcamReorderPerMille", kVendorReorderPerMille, &Faults::reorderPerMille, 1000},
};

struct SwitchFault {
    const char* name;
    uint32_t address;
    bool Faults::*field;
};

constexpr SwitchFault kSwitches[] = {
    {"VcamResendsLoseToo", kVendorResendsLoseToo, &Faults::resendsLoseToo},
    {"VcamLosePayloadOnly", kVendorLosePayloadOnly, &Faults::losePayloadOnly},
    {"VcamIgnoreResend", kVendorIgnoreResend, &Faults::ignoreResend},
    {"VcamStreamSilent", kVendorStreamSilent, &Faults::streamSilent},
    {"VcamDenyControl", kVendorDenyControl, &Faults::denyControl},
    {"VcamRefuseWrites", kVendorRefuseWrites, &Faults::refuseWrites},
    {"VcamAnnouncePending", kVendorAnnouncePending, &Faults::announcePending},
};

struct NamedCounter {
    const char* name;
    uint64_t Counters::*field;
};

constexpr NamedCounter kCounters[] = {
    {"VcamFramesStarted", &Counters::framesStarted},
    {"VcamFramesCompleted", &Counters::framesCompleted},
    {"VcamFramesAborted", &Counters::framesAborted},
    {"VcamPacketsOfFrames", &Counters::packetsOfFrames},
    {"VcamPacketsSent", &Counters::packetsSent},
    {"VcamPacketsDropped", &Counters::packetsDropped},
    {"VcamPacketsMissing", &Counters::packetsMissing},
    {"VcamFramesMissingPackets", &Counters::framesMissingPackets},
    {"VcamResendRequests", &Counters::resendRequests},
    {"VcamResendsServed", &Counters::resendsServed},
    {"VcamPacketsRequested", &Counters::packetsRequested},
    {"VcamPacketsResent", &Counters::packetsResent},
    {"VcamResendsDropped", &Counters::resendsDropped},
    {"VcamPacketsUnavailable", &Counters::packetsUnavailable},
    {"VcamPacketsDuplicated", &Counters::packetsDuplicated},
    {"VcamPacketsReordered", &Counters::packetsReordered},
    {"VcamPacketsTooBig", &Counters::packetsTooBig},
    {"VcamSendErrors", &Counters::sendErrors},
    {"VcamBytesSent", &Counters::bytesSent},
    {"VcamTestPackets", &Counters::testPackets},
    {"VcamTriggersAccepted", &Counters::triggersAccepted},
    {"VcamTriggersMissed", &Counters::triggersMissed},
    {"VcamCommands", &Counters::commands},
    {"VcamBadCommands", &Counters::badCommands},
    {"VcamDiscoveries", &Counters::discoveries},
    {"VcamPendingAnswers", &Counters::pendingAnswers},
    {"VcamAccessDenied", &Counters::accessDenied},
    {"VcamWritesRefused", &Counters::writesRefused},
    {"VcamHeartbeatsExpired", &Counters::heartbeatsExpired},
    {"VcamIgnoredWhileSilent", &Counters::ignoredWhileSilent},
    {"VcamResets", &Counters::resets},
    {"VcamForcedAddresses", &Counters::forcedAddresses},
};
static_assert(sizeof(kCounters) / sizeof(kCounters[0]) == sizeof(Counters) / sizeof(uint64_t),
              "each counter has its register");

constexpr uint32_t kInputLines = 4;

} // namespace

void DeviceModel::DefineVendorLines(FeatureBuilder& build) {
    RegisterHooks levels;
    levels.beforeRead = [this] {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_memory.Set32(kVendorLineLevels, m_lineLevels);
    };
    levels.written = [this] {
        const uint32_t wanted = m_memory.Get32(kVendorLineLevels);
        for (uint32_t line = 0; line < kInputLines; ++line)
            SetLine(line, (wanted >> line & 1) != 0);
    };
    build.Integer("VcamLineLevels", kVendorLineLevels, 0, Access::ReadWrite, levels)
        .Tip("Levels at the input lines.", "A bit for each, bit 0 is Line0.")
        .Visible("Guru")
        .As("HexNumber")
        .Range(0, (1 << kInputLines) - 1)
        .Volatile();
    RegisterHooks pulse;
    pulse.written = [this] { PulseLine(m_memory.Get32(kVendorPulseLine)); };
    build.Integer("VcamPulseLine", kVendorPulseLine, 0, Access::ReadWrite, pulse)
        .Tip("Gives a short pulse at the line with this number.")
        .Visible("Guru")
        .Range(0, kInputLines - 1)
        .Volatile();
}

void DeviceModel::DefineVendor(FeatureBuilder& build) {
    build.Category("VirtualCameraControl");
    const Faults now = m_faults.Get();
    for (const NumberFault& fault : kNumbers) {
        RegisterHooks hooks;
        hooks.beforeRead = [this, fault] { m_memory.Set32(fault.address, m_faults.Get().*(fault.field)); };
        hooks.written = [this, fault] {
            const uint32_t value = m_memory.Get32(fault.address);
            m_faults.Update([&](Faults& faults) { faults.*(fault.field) = value; });
        };
        build.Integer(fault.name, fault.address, now.*(fault.field), Access::ReadWrite, hooks)
            .Tip("Fault on demand.")
            .Visible("Guru")
            .Range(0, fault.most)
            .Volatile();
    }
    for (const SwitchFault& fault : kSwitches) {
        RegisterHooks hooks;
        hooks.beforeRead = [this, fault] {
            m_memory.Set32(fault.address, m_faults.Get().*(fault.field) ? 1 : 0);
        };
        hooks.written = [this, fault] {
            const bool on = m_memory.Get32(fault.address) != 0;
            m_faults.Update([&](Faults& faults) { faults.*(fault.field) = on; });
        };
        build.Boolean(fault.name, fault.address, now.*(fault.field), Access::ReadWrite, hooks)
            .Tip("Fault on demand.")
            .Visible("Guru")
            .Volatile();
    }
    RegisterHooks silence;
    silence.written = [this] {
        const uint32_t ms = m_memory.Get32(kVendorSilenceMs);
        if (ms == 0xFFFFFFFF)
            m_faults.Update([](Faults& faults) { faults.silent = true; });
        else
            m_faults.SilenceUntil(Clock::now() + std::chrono::milliseconds(ms));
    };
    build.Integer("VcamSilenceMs", kVendorSilenceMs, 0, Access::ReadWrite, silence)
        .Tip("Dead for so long from now.")
        .Unit("ms")
        .Visible("Guru")
        .Volatile();
    RegisterHooks xmlFault;
    xmlFault.beforeRead = [this] {
        m_memory.Set32(kVendorXmlFault, static_cast<uint32_t>(m_faults.Get().xml));
    };
    xmlFault.written = [this] {
        const auto fault = static_cast<XmlFault>(m_memory.Get32(kVendorXmlFault));
        m_faults.Update([&](Faults& faults) { faults.xml = fault; });
        ApplyXmlFault();
    };
    build
        .Integer("VcamXmlFault", kVendorXmlFault, static_cast<uint32_t>(now.xml), Access::ReadWrite, xmlFault)
        .Tip("How the XML is broken for whoever opens the camera next.")
        .Visible("Guru")
        .Range(0, static_cast<int64_t>(XmlFault::Cyclic))
        .Volatile();
    if (m_traits.full)
        DefineVendorLines(build);
}

void DeviceModel::DefineVendorCounters(FeatureBuilder& build) {
    uint32_t address = kVendorCounters;
    for (const NamedCounter& counter : kCounters) {
        RegisterHooks hooks;
        hooks.beforeRead = [this, counter, address] {
            Bytes content(8);
            Put64(content.data(), m_counters.Get().*(counter.field));
            m_memory.Replace(address, std::move(content));
        };
        build.Memory().Define(address, Bytes(8), Access::ReadOnly, hooks);
        build.IntegerNodes(counter.name, address, Access::ReadOnly, 8)
            .Tip("Counted since the start of the camera.")
            .Visible("Guru")
            .Volatile();
        address += 8;
    }
}

} // namespace vcam
