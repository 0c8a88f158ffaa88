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
    const uint32_t file = m_memory.Get32(kFileSelector);
    const uint32_t operation = m_memory.Get32(kFileOperationSelector);
    const uint32_t offset = m_memory.Get32(kFileAccessOffset);
    const uint32_t length = m_memory.Get32(kFileAccessLength);
    bool done = false;
    uint32_t moved = 0;
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto open = m_openFiles.find(file);
    const bool isOpen = open != m_openFiles.end();
    switch (operation) {
    case Open: {
        const uint32_t mode = m_memory.Get32(kFileOpenMode);
        const FlashContent flash = m_flash->Get();
        const auto kept = flash.files.find(file);
        const bool exists = kept != flash.files.end();
        done = !isOpen && (mode == ForReading ? exists : file < kUserFiles);
        if (done) {
            m_openFiles[file] = {mode, exists && mode != ForWriting ? kept->second : Bytes()};
            m_memory.Set32(kFileAccessOffset, 0);
        }
        break;
    }
    case Close:
        done = isOpen;
        if (done && open->second.mode != ForReading)
            m_flash->Update([&](FlashContent& flash) { flash.files[file] = open->second.content; });
        if (done)
            m_openFiles.erase(open);
        break;
    case Read:
        done = isOpen && open->second.mode != ForWriting && offset <= open->second.content.size();
        if (done) {
            const Bytes& content = open->second.content;
            moved = std::min(length, static_cast<uint32_t>(content.size() - offset));
            Bytes buffer(kFileAccessBufferLength);
            std::copy_n(content.begin() + offset, moved, buffer.begin());
            m_memory.Replace(kFileAccessBuffer, std::move(buffer));
        }
        break;
    case Write:
        done = isOpen && open->second.mode != ForReading && offset <= open->second.content.size() &&
               offset + length <= kMostFileBytes;
        if (done) {
            Bytes& content = open->second.content;
            const Bytes buffer = m_memory.GetBytes(kFileAccessBuffer);
            content.resize(std::max<size_t>(content.size(), offset + length));
            std::copy_n(buffer.begin(), length, content.begin() + offset);
            moved = length;
        }
        break;
    case Delete:
        done = !isOpen && file < kUserFiles;
        m_flash->Update([&](FlashContent& flash) { done = done && flash.files.erase(file) != 0; });
        break;
    default:
        break;
    }
    if (moved > 0)
        m_memory.Set32(kFileAccessOffset, offset + moved);
    m_memory.Set32(kFileOperationStatus, done ? kDone : kFailed);
    m_memory.Set32(kFileOperationResult, moved);
}

} // namespace vcam
