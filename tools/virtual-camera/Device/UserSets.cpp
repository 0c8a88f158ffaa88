// Features of user sets, and what else the camera keeps without power.
#include "Device/BootstrapRegisters.h"
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace feature;

static_assert(std::tuple_size<decltype(FlashContent::userSets)>::value == kUserSets, "a place for each set");

void DeviceModel::DefineUserSets(FeatureBuilder& build) {
    build.Category("UserSetControl");
    constexpr auto readWrite = Access::ReadWrite;
    const std::vector<EnumValue> sets = {{"Default", 0}, {"UserSet1", 1}, {"UserSet2", 2}, {"UserSet3", 3}};
    build.Enumeration("UserSetSelector", kUserSetSelector, 0, readWrite, sets)
        .Tip("The set that is loaded or saved.", "Default is the maker's and can't be saved.")
        .Visible("Expert");
    build.Formula("UserSetFixed", {{"SET", "UserSetSelector_Val"}, {"LOCKED", "TLParamsLocked_Val"}},
                  "(SET = 0) || (LOCKED <> 0)");
    build.Command("UserSetLoad", kUserSetLoad, [this] { LoadUserSet(m_memory.Get32(kUserSetSelector)); })
        .Tip("Brings back the settings of the set.", "All features that a set keeps change.")
        .Visible("Expert")
        .Locked();
    build.Command("UserSetSave", kUserSetSave, [this] { SaveUserSet(m_memory.Get32(kUserSetSelector)); })
        .Tip("Keeps the present settings in the set.")
        .Visible("Expert")
        .LockedIf("UserSetFixed", [this] { return m_memory.Get32(kUserSetSelector) == 0; })
        .Refuse(build.Idle());
    build.Enumeration("UserSetDefault", kUserSetDefault, 0, readWrite, sets)
        .Tip("The set that is loaded when the camera starts.")
        .Visible("Expert")
        .OnWrite([this] {
            const uint32_t set = m_memory.Get32(kUserSetDefault);
            m_flash->Update([set](FlashContent& flash) { flash.defaultSet = set; });
        });
    for (const char* selected : {"UserSetLoad", "UserSetSave"})
        build.Xml().Find("UserSetSelector")->Add("pSelected", selected);
}

// A set that was never saved is as the maker left it.
void DeviceModel::LoadUserSet(uint32_t set) {
    const FlashContent flash = m_flash->Get();
    const bool saved = set > 0 && flash.userSets[set - 1].has_value();
    m_memory.Restore(saved ? *flash.userSets[set - 1] : m_factorySettings);
    FitRegions();
    if (m_memory.Has(kLutValues))
        ReadLookup();
    Changed()();
}

void DeviceModel::SaveUserSet(uint32_t set) {
    std::map<uint32_t, Bytes> settings;
    for (const uint32_t address : m_settings)
        settings[address] = m_memory.GetBytes(address);
    m_flash->Update([&](FlashContent& flash) { flash.userSets[set - 1] = std::move(settings); });
}

// What stands in the registers at power-up, but for the maker's values.
void DeviceModel::ReadFlash() {
    const FlashContent flash = m_flash->Get();
    m_memory.SetString(bootstrap::kUserName, flash.userName.value_or(m_config.userName));
    if (flash.ipConfiguration)
        m_memory.Set32(bootstrap::kIpConfiguration, *flash.ipConfiguration);
    m_memory.Set32(bootstrap::kPersistentIp, flash.persistentIp);
    m_memory.Set32(bootstrap::kPersistentMask, flash.persistentMask);
    m_memory.Set32(bootstrap::kPersistentGateway, flash.persistentGateway);
    if (!m_traits.full)
        return;
    m_memory.Set32(kUserSetDefault, flash.defaultSet);
    LoadUserSet(flash.defaultSet);
}

void DeviceModel::KeepNetwork() {
    m_flash->Update([this](FlashContent& flash) {
        flash.userName = m_memory.GetString(bootstrap::kUserName);
        flash.ipConfiguration = m_memory.Get32(bootstrap::kIpConfiguration);
        flash.persistentIp = m_memory.Get32(bootstrap::kPersistentIp);
        flash.persistentMask = m_memory.Get32(bootstrap::kPersistentMask);
        flash.persistentGateway = m_memory.Get32(bootstrap::kPersistentGateway);
    });
}

std::optional<NetworkStart> DeviceModel::PersistentNetwork() const {
    const FlashContent flash = m_flash->Get();
    const uint32_t configuration = flash.ipConfiguration.value_or(0);
    if ((configuration & bootstrap::kPersistentIpBit) == 0 || flash.persistentIp == 0)
        return std::nullopt;
    return NetworkStart{flash.persistentIp, flash.persistentMask, flash.persistentGateway};
}

} // namespace vcam
