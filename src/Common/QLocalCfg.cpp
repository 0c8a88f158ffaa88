#include "Common/QLocalCfg.h"

#include "Common/CMutexLocker.h"
#include "Common/SettingsLocation.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <exception>
#include <utility>

namespace {

const char kLocalFile[] = "/LocalConfig.ini";
const char kLangFile[] = "/LangConfig.ini";
const char kLanguageKey[] = "Common/Language";

QMutex g_instanceMutex; // guards the two below
QLocalCfg* g_instance = nullptr;
QString g_directory;

// What a missing text entry of an existing file reads as. deliberate: not what a missing file gives.
const QString kNoText;

void Read(const QSettings& file, const char* key, QString& value, const QString& fallback) {
    value = file.value(key, fallback).toString();
}

void Read(const QSettings& file, const char* key, int& value, int fallback) {
    value = file.value(key, fallback).toInt();
}

void Read(const QSettings& file, const char* key, bool& value, bool fallback) {
    value = file.value(key, fallback).toBool();
}

void Read(const QSettings& file, const char* key, float& value, float fallback) {
    value = file.value(key, static_cast<double>(fallback)).toFloat();
}

QVariant Written(const QString& value) {
    return value;
}

QVariant Written(int value) {
    return value;
}

QVariant Written(bool value) {
    return value;
}

// As a double: QSettings stores a float as an opaque blob, which nobody could edit.
QVariant Written(float value) {
    return static_cast<double>(value);
}

// Calls visit(key, field of `values`, fall-back) for every entry, in the order of the file.
template<typename Values, typename Visit>
void ForEachEntry(Values& values, Visit visit) {
    const _LOCAL_CFG_ d;
    visit("AddCamera/IP", values.remoteCamIP, d.remoteCamIP);
    visit("General/UserLevel", values.userLevel, d.userLevel);
    visit("General/AutoScanNewDev", values.autoScanNewDev, d.autoScanNewDev);
    visit("Recording/SaveMode", values.saveMode, d.saveMode);
    visit("Recording/OutputFolder", values.dataOutputFolder, kNoText);
    visit("Recording/RecdingVedioFormat", values.recdingVideoFormat, d.recdingVideoFormat);
    visit("Recording/VideoQualityType", values.videoQualityType, d.videoQualityType);
    visit("Recording/VideoQuality", values.videoQuality, d.videoQuality);
    visit("Recording/EnableSetFixedPlaybackSpeed", values.enableFixedPlaybackSpeed,
          d.enableFixedPlaybackSpeed);
    visit("Recording/FixedPlaybackSpeed", values.fixedPlaybackSpeed, d.fixedPlaybackSpeed);
    visit("Recording/ImgFormat", values.imgSaveFormat, d.imgSaveFormat);
    visit("Recording/ImgQualityType", values.imgQualityType, d.imgQualityType);
    visit("Recording/ImgQuality", values.imgQuality, d.imgQuality);
    visit("Recording/ImgSaveMode", values.imgSaveMode, d.imgSaveMode);
    visit("Recording/ImgSaveSpanFrames", values.imgSaveSpanFrames, d.imgSaveSpanFrames);
    visit("Recording/ImgSaveFixedFrames", values.checkImgSaveFixedFrames, d.checkImgSaveFixedFrames);
    visit("Recording/ImgSaveFixedFramesNum", values.imgSaveFixedFramesNum, d.imgSaveFixedFramesNum);
    visit("Recording/ImgSaveSpanTime", values.imgSaveSpanTime, d.imgSaveSpanTime);
    visit("Recording/ImgSaveSpanTimeUnit", values.imgSaveSpanTimeUnit, d.imgSaveSpanTimeUnit);
    visit("Recording/ImgSaveFixedTime", values.checkImgSaveFixedTimes, d.checkImgSaveFixedTimes);
    visit("Recording/ImgSaveFixedTimeNum", values.imgSaveFixedTimeNum, d.imgSaveFixedTimeNum);
    visit("Recording/ImgSaveFixedTimeUnit", values.imgSaveFixedTimeUnit, d.imgSaveFixedTimeUnit);
    visit("Recording/ImgSavePreFileName", values.imgSavePreFileName, kNoText);
    visit("Recording/ImgSaveFileNameIndex", values.imgSaveFileNameIndexType, d.imgSaveFileNameIndexType);
    visit("NetWorkCfg/AutoCheckNetwork", values.autoCheckNetwork, d.autoCheckNetwork);
    visit("NetWorkCfg/AutoLostPacketConfig", values.autoCheckThrowFrame, d.autoCheckThrowFrame);
    visit("Buffers/SDKBufferSize", values.sdkBufferSize, d.sdkBufferSize);
    visit("Buffers/ImgSaveBufferSize", values.imgSaveBufferSize, d.imgSaveBufferSize);
    visit("View/ViewShowFlage", values.viewShowFlage, d.viewShowFlage);
    visit("View/StatusShowFlage", values.statusShowFlage, d.statusShowFlage);
    visit("Common/FirstStartClient", values.firstStartClient, d.firstStartClient);
    visit("Common/RenderEngine", values.renderEngine, d.renderEngine);
}

} // namespace

QLocalCfg* QLocalCfg::Instance() {
    const CMutexLocker lock(&g_instanceMutex);
    if (g_instance)
        return g_instance;
    const QString executableDir = QCoreApplication::applicationDirPath();
    const QString directory = g_directory.isEmpty() ? SettingsDirectory(executableDir) : g_directory;
    auto* made = new QLocalCfg(directory, g_directory.isEmpty() ? executableDir : g_directory);
    if (made->LoadDataFromIniFile() && made->LoadLangDataFromIniFile())
        g_instance = made;
    else
        delete made;
    return g_instance;
}

void QLocalCfg::ReleaseInstance() {
    const CMutexLocker lock(&g_instanceMutex);
    delete g_instance;
    g_instance = nullptr;
}

void QLocalCfg::SetDirectory(const QString& directory) {
    const CMutexLocker lock(&g_instanceMutex);
    g_directory = directory;
}

QLocalCfg::QLocalCfg(QString directory, QString executableDir)
    : m_strDirectory(std::move(directory)), m_strExecutableDir(std::move(executableDir)) {}

QLocalCfg::~QLocalCfg() {
    SaveDataToIniFile();
    SaveLangDataToIniFile();
}

bool QLocalCfg::LoadDataFromIniFile() try {
    const CMutexLocker lock(&m_mutex);
    if (!QFile::exists(m_strDirectory + kLocalFile)) {
        if (m_values.dataOutputFolder.isEmpty())
            m_values.dataOutputFolder = FirstOutputFolder(m_strExecutableDir);
        QDir().mkpath(m_values.dataOutputFolder);
        return true;
    }
    const QSettings file(m_strDirectory + kLocalFile, QSettings::IniFormat);
    ForEachEntry(m_values, [&file](const char* key, auto& value, const auto& fallback) {
        Read(file, key, value, fallback);
    });
    return true;
} catch (const std::exception&) {
    return false;
}

bool QLocalCfg::LoadLangDataFromIniFile() try {
    const CMutexLocker lock(&m_mutex);
    if (!QFile::exists(m_strDirectory + kLangFile))
        return true;
    const QSettings file(m_strDirectory + kLangFile, QSettings::IniFormat);
    m_nLanguage = file.value(kLanguageKey, 0).toInt();
    return true;
} catch (const std::exception&) {
    return false;
}

void QLocalCfg::SaveDataToIniFile() {
    _LOCAL_CFG_ values;
    {
        const CMutexLocker lock(&m_mutex);
        values = m_values;
    }
    // deliberate: whatever the memory says, the next start is not the first one.
    values.firstStartClient = false;
    QSettings file(m_strDirectory + kLocalFile, QSettings::IniFormat);
    ForEachEntry(values, [&file](const char* key, const auto& value, const auto&) {
        file.setValue(key, Written(value));
    });
}

void QLocalCfg::SaveLangDataToIniFile() {
    QSettings file(m_strDirectory + kLangFile, QSettings::IniFormat);
    file.setValue(kLanguageKey, GetLanguageVersion());
}

int QLocalCfg::GetFixedPlaybackSpeed() const {
    const float speed = Get(&_LOCAL_CFG_::fixedPlaybackSpeed);
    // A hand-edited file may hold anything; out of int's range the conversion is undefined.
    if (!(speed > -2147483648.0f && speed < 2147483648.0f))
        return 0;
    return static_cast<int>(speed);
}

int QLocalCfg::GetLanguageVersion() const {
    const CMutexLocker lock(&m_mutex);
    return m_nLanguage;
}

void QLocalCfg::SetLanguageVersion(int v) {
    {
        const CMutexLocker lock(&m_mutex);
        m_nLanguage = v;
    }
    // The one setting that is written at once, so that a killed program comes back in the chosen language.
    SaveLangDataToIniFile();
}
