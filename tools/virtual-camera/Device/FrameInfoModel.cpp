// Features of the facts that a frame carries in its first pixels.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace feature;

namespace {
constexpr uint32_t kAllFacts = (1u << kFrameFacts) - 1;
} // namespace

void DeviceModel::DefineFrameInfo(FeatureBuilder& build) {
    build.Category("FrameSpecInfoControl");
    constexpr auto readWrite = Access::ReadWrite;
    constexpr const char* uncompressed = "CompressionInactive";
    // A picture without colours has no white balance, a compressed one no room for any fact. The register
    // says the same as the entries.
    const std::vector<EnumValue> facts = {
        {"Timestamp", 0, nullptr, uncompressed},
        {"Gain", 1, nullptr, uncompressed},
        {"Exposure", 2, nullptr, uncompressed},
        {"Brightness", 3, nullptr, uncompressed},
        {"WhiteBalance", 4, "ColourInquiry", uncompressed},
        {"FrameCounter", 5, nullptr, uncompressed},
        {"ExTriggerCount", 6, nullptr, uncompressed},
        {"LineInputOutput", 7, nullptr, uncompressed},
        {"ROIPosition", 8, nullptr, uncompressed},
    };
    const uint32_t has =
        m_traits.colour ? kAllFacts : kAllFacts & ~(1u << static_cast<uint32_t>(FrameFact::WhiteBalance));
    RegisterHooks selector;
    selector.check = [this, has](const Bytes& proposed) {
        const uint32_t fact = vcam::Get32(proposed.data());
        if (On(kImageCompressionMode))
            return Status::WriteProtect;
        return (has >> fact & 1) != 0 ? Status::Success : Status::InvalidParameter;
    };
    build.Enumeration("FrameSpecInfoSelector", kFrameInfoSelector, 0, readWrite, facts, selector)
        .Tip("The fact that FrameSpecInfo belongs to.")
        .Visible("Expert")
        .Setting();
    RegisterHooks one;
    one.beforeRead = [this] {
        m_memory.Set32(kFrameInfo, m_memory.Get32(kFrameInfoMask) >> m_memory.Get32(kFrameInfoSelector) & 1);
    };
    one.written = [this] {
        const uint32_t bit = 1u << m_memory.Get32(kFrameInfoSelector);
        const uint32_t others = m_memory.Get32(kFrameInfoMask) & ~bit;
        m_memory.Set32(kFrameInfoMask, others | (m_memory.Get32(kFrameInfo) != 0 ? bit : 0));
        Changed()();
    };
    build.Boolean("FrameSpecInfo", kFrameInfo, false, readWrite, one)
        .Tip("Whether the fact stands in the first pixels of a frame.")
        .Visible("Expert")
        .Volatile();
    RegisterHooks mask;
    mask.written = [this, has] { // what the camera doesn't have stays off
        m_memory.Set32(kFrameInfoMask, m_memory.Get32(kFrameInfoMask) & has);
        Changed()();
    };
    m_memory.Define32(kFrameInfoMask, 0, readWrite, mask);
    build.BareRegister("IntReg", "FrameSpecInfo_Reg", kFrameInfoMask, 4, readWrite)
        .Tip("The facts that stand in the first pixels of a frame.", "A bit for each, bit 0 is Timestamp.")
        .Visible("Guru")
        .Face("pInvalidator", "UserSetLoad")
        .Volatile();
    build.AddSetting(kFrameInfoMask);
    build.Xml().Find("FrameSpecInfoSelector")->Add("pSelected", "FrameSpecInfo");
}

} // namespace vcam
