// Features of the lookup table and of high dynamic range.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace feature;

// The table lies in the register space as a whole, a word for each entry; LUTValue is the word that LUTIndex
// leads to, LUTValueAll all of them.
void DeviceModel::DefineLut(FeatureBuilder& build) {
    build.Category("LUTControl");
    constexpr auto readWrite = Access::ReadWrite;
    constexpr auto last = static_cast<uint32_t>(kLookupEntries - 1);
    build.Enumeration("LUTSelector", kLutSelector, 0, readWrite, {{"Luminance", 0}})
        .Tip("The table that the features below belong to.", "It maps each component of a pixel.")
        .Visible("Expert")
        .Setting();
    build.Boolean("LUTEnable", kLutEnable, false, readWrite)
        .Tip("Whether the lookup table is applied.")
        .Visible("Expert")
        .OnWrite(Changed())
        .Setting();
    build.Integer("LUTIndex", kLutIndex, 0, readWrite)
        .Tip("The entry that LUTValue belongs to.", "It stands for the upper 10 bits of a component.")
        .Visible("Guru")
        .Range(0, last);

    Bytes identity;
    for (const uint16_t value : IdentityLookup())
        Append32(identity, value);
    RegisterHooks values;
    values.check = [](const Bytes& proposed) {
        for (size_t at = 0; at < proposed.size(); at += 4) {
            if (vcam::Get32(proposed.data() + at) > kMostLookupValue)
                return Status::InvalidParameter;
        }
        return Status::Success;
    };
    values.written = [this] {
        ReadLookup();
        Changed()();
    };
    const auto length = static_cast<uint32_t>(identity.size());
    m_memory.Define(kLutValues, std::move(identity), readWrite, values);
    Feature value = build.IntegerNodes("LUTValue", kLutValues, readWrite);
    value.Tip("The entry at LUTIndex.", "A component of 12 bits.")
        .Visible("Guru")
        .Range(0, kMostLookupValue)
        .ChangesWith({"LUTValueAll", "UserSetLoad"});
    value.RegisterNode().Index("LUTIndex_Val", 4);
    build.Xml().Find("LUTIndex")->Add("pSelected", "LUTValue");
    build.BareRegister("Register", "LUTValueAll", kLutValues, length, readWrite)
        .Tip("The whole table.", "A word for each entry, most significant byte first.")
        .Visible("Guru")
        .ChangesWith({"LUTValue", "UserSetLoad"});
    for (const char* selected : {"LUTEnable", "LUTIndex", "LUTValue", "LUTValueAll"})
        build.Xml().Find("LUTSelector")->Add("pSelected", selected);
    build.AddSetting(kLutValues);
    ReadLookup();
}

void DeviceModel::ReadLookup() {
    const Bytes words = m_memory.GetBytes(kLutValues);
    auto table = std::make_shared<LookupTable>();
    for (size_t index = 0; index < table->size(); ++index)
        (*table)[index] = static_cast<uint16_t>(vcam::Get32(words.data() + 4 * index));
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lookup = std::move(table);
}

// Four sets of gain and shutter take turns from frame to frame.
void DeviceModel::DefineHdr(FeatureBuilder& build) {
    build.Category("HDRControl");
    constexpr auto readWrite = Access::ReadWrite;
    build.Boolean("HDREnable", kHdrEnable, false, readWrite)
        .Tip("Takes frames by the four sets in turn.", "ExposureTime and Gain have no effect meanwhile.")
        .Visible("Expert")
        .Locked()
        .Setting();
    build.Integer("HDRSelector", kHdrSelector, 0, readWrite)
        .Tip("The set that the features below belong to.")
        .Visible("Expert")
        .Range(0, kHdrSets - 1)
        .Setting();
    build.Float("HDRGain", kHdrGain, 0, readWrite)
        .Per("HDRSelector", kHdrSets, kHdrStride)
        .Tip("Amplification of the frames of this set.")
        .Unit("dB")
        .Visible("Expert")
        .RangeF(0, 24)
        .OnWrite(Changed())
        .Setting();
    const auto nominal = static_cast<uint32_t>(NominalExposure());
    build.Integer("HDRShutter", kHdrShutter, nominal, readWrite)
        .Per("HDRSelector", kHdrSets, kHdrStride)
        .Tip("Exposure time of the frames of this set.")
        .Unit("us")
        .Visible("Expert")
        .Range(m_traits.lineScan ? 2 : 10, m_traits.lineScan ? 10000 : 1000000)
        .OnWrite(Changed())
        .Setting();
    for (uint32_t set = 0; set < kHdrSets; ++set) // from half the light to four times as much
        m_memory.Set32(kHdrShutter + set * kHdrStride, nominal / 2 << set);
}

} // namespace vcam
