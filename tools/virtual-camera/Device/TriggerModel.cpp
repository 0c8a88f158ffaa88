// Features of triggers and of input and output lines.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace feature;

namespace {

constexpr uint32_t kFirstSwitchable = 2; // Line0 and Line1 are inputs for good
constexpr uint32_t kLineInput = 0;
constexpr uint32_t kLineOutput = 1;
constexpr uint32_t kSourceUserOutput0 = 1;
constexpr uint32_t kTriggerWidth = 1; // of ExposureMode

} // namespace

uint32_t DeviceModel::TriggerRegister(TriggerKind kind, uint32_t offset) const {
    return kTriggerSets + static_cast<uint32_t>(kind) * kTriggerSetStride + offset;
}

void DeviceModel::DefineTrigger(FeatureBuilder& build) {
    build.Category("AcquisitionControl");
    constexpr uint32_t kinds = 2;
    build
        .Enumeration("TriggerSelector", kTriggerSelector, 0, Access::ReadWrite,
                     {{"FrameStart", 0}, {"AcquisitionStart", 1}})
        .Tip("The trigger that the features below belong to.")
        .Setting();
    const auto made = [&](Feature feature) {
        return feature.Per("TriggerSelector", kinds, kTriggerSetStride).OnWrite(Changed()).Setting();
    };
    made(build.Enumeration("TriggerMode", kTriggerSets + kTriggerModeOffset, 0, Access::ReadWrite,
                           {{"Off", 0}, {"On", 1}}))
        .Tip("Whether the trigger is needed.", "Off, the camera runs by itself.");
    made(build.Enumeration("TriggerSource", kTriggerSets + kTriggerSourceOffset, 0, Access::ReadWrite,
                           {{"Software", 0}, {"Line0", 1}, {"Line1", 2}, {"Line2", 3}, {"Line3", 4}}))
        .Tip("Where the trigger comes from.");
    made(build.Enumeration("TriggerActivation", kTriggerSets + kTriggerActivationOffset, 0, Access::ReadWrite,
                           {{"RisingEdge", 0}, {"FallingEdge", 1}, {"AnyEdge", 2}}))
        .Tip("The edge that counts, of a trigger that comes by a line.");
    made(build.Float("TriggerDelay", kTriggerSets + kTriggerDelayOffset, 0, Access::ReadWrite))
        .Tip("From the trigger to the exposure.")
        .Unit("us")
        .RangeF(0, 1000000);
    build.Command("TriggerSoftware", kTriggerSoftware, [this] { SoftwareTrigger(); })
        .Tip("Gives a trigger.", "It counts for each trigger whose source is Software.")
        .AvailableIf("TriggerBySoftware");
    build.Formula("TriggerBySoftware", {{"SOURCE", "TriggerSource_Val"}}, "SOURCE = 0");
    build.Xml().Find("TriggerSelector")->Add("pSelected", "TriggerSoftware");
}

void DeviceModel::SoftwareTrigger() {
    TriggerBy(TriggerSource::Software, true);
}

void DeviceModel::TriggerBy(TriggerSource source, bool rising) {
    if (m_stream == nullptr)
        return;
    for (const TriggerKind kind : {TriggerKind::AcquisitionStart, TriggerKind::FrameStart}) {
        if (!On(TriggerRegister(kind, kTriggerModeOffset)) ||
            Word(TriggerRegister(kind, kTriggerSourceOffset), 0) != static_cast<uint32_t>(source))
            continue;
        const auto edge =
            static_cast<TriggerActivation>(Word(TriggerRegister(kind, kTriggerActivationOffset), 0));
        const bool begins = source == TriggerSource::Software || edge == TriggerActivation::AnyEdge ||
                            rising == (edge == TriggerActivation::RisingEdge);
        if (kind == TriggerKind::AcquisitionStart) {
            if (begins)
                m_stream->AcquisitionTrigger();
            continue;
        }
        const bool byWidth = source != TriggerSource::Software && edge != TriggerActivation::AnyEdge &&
                             Word(kExposureMode, 0) == kTriggerWidth;
        if (!byWidth) {
            if (begins)
                m_stream->FrameTrigger(0);
            continue;
        }
        // The pulse is the exposure, and the frame is there at its end.
        std::optional<Clock::time_point> began;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            began.swap(m_pulseBegan);
            if (begins)
                m_pulseBegan = Clock::now();
        }
        if (!begins && began)
            m_stream->FrameTrigger(
                std::max(1.0, std::chrono::duration<double, std::micro>(Clock::now() - *began).count()));
    }
}

void DeviceModel::DefineLines(FeatureBuilder& build) {
    build.Category("DigitalIOControl");
    build
        .Enumeration("LineSelector", kLineSelector, 0, Access::ReadWrite,
                     {{"Line0", 0}, {"Line1", 1}, {"Line2", 2}, {"Line3", 3}})
        .Tip("The line that the features below belong to.")
        .Setting();
    build.Formula("LineFixed", {{"LINE", "LineSelector_Val"}}, "LINE < 2");
    build.Formula("LineIsOutput", {{"MODE", "LineMode_Val"}}, "MODE = 1");
    build
        .Enumeration("LineMode", kLineMode, kLineInput, Access::ReadWrite,
                     {{"Input", kLineInput}, {"Output", kLineOutput}})
        .Per("LineSelector", kLines, 4)
        .Tip("Whether the line is an input or an output.", "Line0 and Line1 are inputs for good.")
        .Visible("Expert")
        .LockedIf("LineFixed")
        .OnWrite(Changed())
        .Setting();
    for (uint32_t line = 0; line < kFirstSwitchable; ++line)
        m_memory.AddHooks(kLineMode + 4 * line, {{}, ProtectedWhile([] { return true; }), {}});
    build.Boolean("LineInverter", kLineInverter, false, Access::ReadWrite)
        .Per("LineSelector", kLines, 4)
        .Tip("Exchanges high and low of the line.")
        .Visible("Expert")
        .OnWrite(Changed())
        .Setting();
    build
        .Enumeration("LineSource", kLineSource, 0, Access::ReadWrite,
                     {{"Off", 0}, {"UserOutput0", kSourceUserOutput0}, {"UserOutput1", 2}})
        .Per("LineSelector", kLines, 4)
        .Tip("What the output shows.")
        .Visible("Expert")
        .AvailableIf("LineIsOutput")
        .OnWrite(Changed())
        .Setting();
    build.Boolean("LineStatus", kLineStatus, false, Access::ReadOnly)
        .Per("LineSelector", kLines, 4)
        .Tip("Level of the line.", "As the camera takes it, after LineInverter.")
        .Visible("Expert")
        .Volatile(500);
    for (uint32_t line = 0; line < kLines; ++line)
        m_memory.AddHooks(
            kLineStatus + 4 * line,
            {[this, line] { m_memory.Set32(kLineStatus + 4 * line, (LineLevels() >> line) & 1); }, {}, {}});
    RegisterHooks all;
    all.beforeRead = [this] { m_memory.Set32(kLineStatusAll, LineLevels()); };
    build.Integer("LineStatusAll", kLineStatusAll, 0, Access::ReadOnly, all)
        .Tip("Levels of all lines.", "A bit for each, bit 0 is Line0.")
        .As("HexNumber")
        .Visible("Expert")
        .Volatile(500);
}

void DeviceModel::DefineOutputs(FeatureBuilder& build) {
    build.Category("DigitalIOControl");
    build
        .Enumeration("UserOutputSelector", kUserOutputSelector, 0, Access::ReadWrite,
                     {{"UserOutput0", 0}, {"UserOutput1", 1}})
        .Tip("The value that UserOutputValue belongs to.")
        .Visible("Expert")
        .Setting();
    build.Boolean("UserOutputValue", kUserOutputValue, false, Access::ReadWrite)
        .Per("UserOutputSelector", kUserOutputs, 4)
        .Tip("A level for outputs that show it.")
        .Visible("Expert")
        .OnWrite(Changed())
        .Setting();
}

bool DeviceModel::IsInput(uint32_t line) const {
    return Word(kLineMode + 4 * line, kLineInput) == kLineInput;
}

uint32_t DeviceModel::LineLevels() const {
    uint32_t electrical = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        electrical = m_lineLevels;
    }
    uint32_t levels = 0;
    for (uint32_t line = 0; line < kLines; ++line) {
        bool high = (electrical >> line & 1) != 0;
        if (!IsInput(line)) {
            const uint32_t source = Word(kLineSource + 4 * line, 0);
            high = source >= kSourceUserOutput0 && On(kUserOutputValue + 4 * (source - kSourceUserOutput0));
        }
        levels |= (high != On(kLineInverter + 4 * line) ? 1u : 0u) << line;
    }
    return levels;
}

void DeviceModel::SetLine(uint32_t line, bool high) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const uint32_t bit = 1u << line;
        if (((m_lineLevels & bit) != 0) == high)
            return;
        m_lineLevels ^= bit;
    }
    if (!IsInput(line))
        return;
    Changed()(); // frames tell the levels
    TriggerBy(static_cast<TriggerSource>(static_cast<uint32_t>(TriggerSource::Line0) + line),
              high != On(kLineInverter + 4 * line));
}

void DeviceModel::PulseLine(uint32_t line) {
    SetLine(line, false);
    SetLine(line, true);
    SetLine(line, false);
}

} // namespace vcam
