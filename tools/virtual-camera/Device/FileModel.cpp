// Features of file access: files that can be read, written and deleted, as the standard's feature list has
// it.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <algorithm>

namespace vcam {

using namespace feature;

namespace {

enum Operation : uint32_t { Open = 0, Close = 1, Read = 2, Write = 3, Delete = 4 };
enum OpenMode : uint32_t { ForReading = 0, ForWriting = 1, ForBoth = 2 };
constexpr uint32_t kDone = 0;
constexpr uint32_t kFailed = 1;
constexpr uint32_t kMostFileBytes = 65536;
constexpr const char* kFileNames[] = {"UserFile1", "UserFile2", "DeviceLog"};
constexpr uint32_t kUserFiles = 2; // the log can't be changed

Bytes Text(const std::string& text) {
    return {text.begin(), text.end()};
}

} // namespace

void DeviceModel::DefineFiles(FeatureBuilder& build) {
    build.Category("FileAccessControl");
    constexpr auto readWrite = Access::ReadWrite;
    std::vector<EnumValue> files;
    for (const char* name : kFileNames)
        files.push_back({name, static_cast<uint32_t>(files.size())});
    build.Enumeration("FileSelector", kFileSelector, 0, readWrite, files)
        .Tip("The file that the features below belong to.")
        .Visible("Guru");
    build
        .Enumeration("FileOperationSelector", kFileOperationSelector, Open, readWrite,
                     {{"Open", Open}, {"Close", Close}, {"Read", Read}, {"Write", Write}, {"Delete", Delete}})
        .Tip("What FileOperationExecute does.")
        .Visible("Guru");
    build.Command("FileOperationExecute", kFileOperationExecute, [this] { FileOperation(); })
        .Tip("Does what is selected.", "FileOperationStatus and FileOperationResult tell how it went.")
        .Visible("Guru");
    build
        .Enumeration("FileOpenMode", kFileOpenMode, ForReading, readWrite,
                     {{"Read", ForReading}, {"Write", ForWriting}, {"ReadWrite", ForBoth}})
        .Tip("How the file is opened.", "Write begins with an empty file, ReadWrite with what is there.")
        .Visible("Guru");
    build
        .Enumeration("FileOperationStatus", kFileOperationStatus, kDone, Access::ReadOnly,
                     {{"Success", kDone}, {"Failure", kFailed}})
        .Tip("How the last operation went.")
        .Visible("Guru")
        .Volatile();
    build.Integer("FileOperationResult", kFileOperationResult, 0, Access::ReadOnly)
        .Tip("Bytes that the last operation moved.")
        .Unit("B")
        .Visible("Guru")
        .Volatile();
    RegisterHooks size;
    size.beforeRead = [this] {
        const FlashContent flash = m_flash->Get();
        const auto found = flash.files.find(m_memory.Get32(kFileSelector));
        m_memory.Set32(kFileSize,
                       found == flash.files.end() ? 0 : static_cast<uint32_t>(found->second.size()));
    };
    build.Integer("FileSize", kFileSize, 0, Access::ReadOnly, size)
        .Tip("Bytes of the file.", "0 if it is empty or was deleted.")
        .Unit("B")
        .Visible("Guru")
        .Volatile();
    DefineFileAccess(build);
    for (const char* selected : {"FileOperationSelector", "FileOpenMode", "FileSize", "FileAccessOffset",
                                 "FileAccessLength", "FileOperationStatus", "FileOperationResult"})
        build.Xml().Find("FileSelector")->Add("pSelected", selected);
    build.Xml().Find("FileOperationSelector")->Add("pSelected", "FileOperationExecute");

    m_flash->Update([this](FlashContent& flash) {
        if (!flash.filesMade)
            flash.files = {
                {0, Text("Notes of the user.\n")}, {1, {}}, {2, Text("Made as " + m_config.serial + ".\n")}};
        flash.filesMade = true;
    });
}

void DeviceModel::DefineFileAccess(FeatureBuilder& build) {
    constexpr auto readWrite = Access::ReadWrite;
    build.Integer("FileAccessOffset", kFileAccessOffset, 0, readWrite)
        .Tip("Where in the file the next operation begins.", "Each operation moves it on.")
        .Unit("B")
        .Visible("Guru")
        .Range(0, kMostFileBytes)
        .Volatile();
    build.Integer("FileAccessLength", kFileAccessLength, kFileAccessBufferLength, readWrite)
        .Tip("Bytes that the next operation moves.")
        .Unit("B")
        .Visible("Guru")
        .Range(0, kFileAccessBufferLength);
    m_memory.Define(kFileAccessBuffer, Bytes(kFileAccessBufferLength), readWrite);
    build.BareRegister("Register", "FileAccessBuffer", kFileAccessBuffer, kFileAccessBufferLength, readWrite)
        .Tip("What was read, or is to be written.")
        .Visible("Guru")
        .Volatile();
}

void DeviceModel::FileOperation() {
    FileOrder order;
    order.file = m_memory.Get32(kFileSelector);
    order.mode = m_memory.Get32(kFileOpenMode);
    order.offset = m_memory.Get32(kFileAccessOffset);
    order.length = m_memory.Get32(kFileAccessLength);
    using Step = bool (DeviceModel::*)(FileOrder&);
    static constexpr Step kSteps[] = {&DeviceModel::OpenFileNow, &DeviceModel::CloseFile,
                                      &DeviceModel::ReadFile, &DeviceModel::WriteFile,
                                      &DeviceModel::DeleteFile};
    const std::lock_guard<std::mutex> lock(m_mutex);
    const bool done = (this->*kSteps[m_memory.Get32(kFileOperationSelector)])(order);
    m_memory.Set32(kFileAccessOffset, order.offset + order.moved);
    m_memory.Set32(kFileOperationStatus, done ? kDone : kFailed);
    m_memory.Set32(kFileOperationResult, order.moved);
}

// All below: under the mutex. False when it can't be done.

bool DeviceModel::OpenFileNow(FileOrder& order) {
    const FlashContent flash = m_flash->Get();
    const auto kept = flash.files.find(order.file);
    const bool exists = kept != flash.files.end();
    const bool allowed = order.mode == ForReading ? exists : order.file < kUserFiles;
    if (m_openFiles.count(order.file) != 0 || !allowed)
        return false;
    m_openFiles[order.file] = {order.mode, exists && order.mode != ForWriting ? kept->second : Bytes()};
    order.offset = 0;
    return true;
}

bool DeviceModel::CloseFile(FileOrder& order) {
    const auto open = m_openFiles.find(order.file);
    if (open == m_openFiles.end())
        return false;
    if (open->second.mode != ForReading)
        m_flash->Update([&](FlashContent& flash) { flash.files[order.file] = open->second.content; });
    m_openFiles.erase(open);
    return true;
}

bool DeviceModel::ReadFile(FileOrder& order) {
    const auto open = m_openFiles.find(order.file);
    if (open == m_openFiles.end() || open->second.mode == ForWriting ||
        order.offset > open->second.content.size())
        return false;
    const Bytes& content = open->second.content;
    order.moved = std::min(order.length, static_cast<uint32_t>(content.size() - order.offset));
    Bytes buffer(kFileAccessBufferLength);
    std::copy_n(content.begin() + order.offset, order.moved, buffer.begin());
    m_memory.Replace(kFileAccessBuffer, std::move(buffer));
    return true;
}

bool DeviceModel::WriteFile(FileOrder& order) {
    const auto open = m_openFiles.find(order.file);
    if (open == m_openFiles.end() || open->second.mode == ForReading ||
        order.offset > open->second.content.size() || order.offset + order.length > kMostFileBytes)
        return false;
    Bytes& content = open->second.content;
    const Bytes buffer = m_memory.GetBytes(kFileAccessBuffer);
    content.resize(std::max<size_t>(content.size(), order.offset + order.length));
    std::copy_n(buffer.begin(), order.length, content.begin() + order.offset);
    order.moved = order.length;
    return true;
}

bool DeviceModel::DeleteFile(FileOrder& order) {
    if (m_openFiles.count(order.file) != 0 || order.file >= kUserFiles)
        return false;
    bool there = false;
    m_flash->Update([&](FlashContent& flash) { there = flash.files.erase(order.file) != 0; });
    return there;
}

} // namespace vcam
