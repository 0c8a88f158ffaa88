// All settings of the program: one getter and one setter each, kept in memory and stored in two INI files.
#pragma once

#include "Common/CMutexLocker.h"

#include <QMutex>
#include <QObject>
#include <QString>

// Values as they stand in the settings files, with the defaults of a first start. Not validated: whoever uses
// a value that a person may have edited checks it there.
struct _LOCAL_CFG_ {
    QString remoteCamIP = "0.0.0.0";
    int userLevel = 0; // 0 Beginner, 1 Expert, 2 Guru
    bool autoScanNewDev = false;
    int saveMode = 0; // record button: 0 video, 1 continuous image capture
    QString dataOutputFolder;
    int recdingVideoFormat = 0; // 2 raw
    int videoQualityType = 0;   // 0 Normal, 1 Better, 2 Best
    int videoQuality = 40;      // 1 to 100
    bool enableFixedPlaybackSpeed = false;
    float fixedPlaybackSpeed = 25; // frames per second
    int imgSaveFormat = 1;         // 0 BMP, 1 JPG, 2 RAW
    int imgQualityType = 0;        // 0 Normal, 1 Better, 2 Best
    int imgQuality = 40;           // 1 to 100
    int imgSaveMode = 0;           // series: 0 by frame, 1 by time
    int imgSaveSpanFrames = 1;
    bool checkImgSaveFixedFrames = false;
    int imgSaveFixedFramesNum = 1000;
    int imgSaveSpanTime = 1;
    int imgSaveSpanTimeUnit = 1; // 1 seconds, 2 minutes, 3 hours
    bool checkImgSaveFixedTimes = false;
    int imgSaveFixedTimeNum = 5;
    int imgSaveFixedTimeUnit = 2; // 1 seconds, 2 minutes, 3 hours
    QString imgSavePreFileName = "Image_";
    int imgSaveFileNameIndexType = 0; // 0 date and time, 1 increasing number
    bool autoCheckNetwork = true;
    bool autoCheckThrowFrame = true;
    int sdkBufferSize = 6;     // frames
    int imgSaveBufferSize = 3; // frames
    int viewShowFlage = 7;     // bit mask of the shown panels
    int statusShowFlage = 79;  // bit mask of the status bar items
    bool firstStartClient = true;
    int renderEngine = 0;
};

// The singleton. Any thread may read and write; setters change memory only (SetLanguageVersion also writes
// its file at once). The destructor writes both files.
class QLocalCfg : public QObject {
    Q_OBJECT

public:
    // Made and loaded on first use; null when the loading failed.
    static QLocalCfg* Instance();
    static void ReleaseInstance();

    // Folder of the settings files from the next first use on; "" for the folder beside the executable (or
    // the user's own where that one is read-only).
    static void SetDirectory(const QString& directory);

    // Neither makes the folder nor reports a failure.
    void SaveDataToIniFile();
    void SaveLangDataToIniFile();

    QString GetRemoteCamIP() const { return Get(&_LOCAL_CFG_::remoteCamIP); }
    void SetRemoteCamIP(const QString& v) { Set(&_LOCAL_CFG_::remoteCamIP, v); }
    int GetUserLevel() const { return Get(&_LOCAL_CFG_::userLevel); }
    void SetUserLevel(int v) { Set(&_LOCAL_CFG_::userLevel, v); }
    bool GetAutoScanNewDev() const { return Get(&_LOCAL_CFG_::autoScanNewDev); }
    void SetAutoScanNewDev(bool v) { Set(&_LOCAL_CFG_::autoScanNewDev, v); }
    int GetSaveMode() const { return Get(&_LOCAL_CFG_::saveMode); }
    void SetSaveMode(int v) { Set(&_LOCAL_CFG_::saveMode, v); }
    QString GetDataOutputFolder() const { return Get(&_LOCAL_CFG_::dataOutputFolder); }
    void SetDataOutputFolder(const QString& v) { Set(&_LOCAL_CFG_::dataOutputFolder, v); }
    int GetRecdingVideoFormat() const { return Get(&_LOCAL_CFG_::recdingVideoFormat); }
    void SetRecdingVideoFormat(int v) { Set(&_LOCAL_CFG_::recdingVideoFormat, v); }
    int GetVideoQualityType() const { return Get(&_LOCAL_CFG_::videoQualityType); }
    void SetVideoQualityType(int v) { Set(&_LOCAL_CFG_::videoQualityType, v); }
    int GetVideoQuality() const { return Get(&_LOCAL_CFG_::videoQuality); }
    void SetVideoQuality(int v) { Set(&_LOCAL_CFG_::videoQuality, v); }
    bool GetIsEnableFixedPlaybackSpeed() const { return Get(&_LOCAL_CFG_::enableFixedPlaybackSpeed); }
    void SetEnableFixedPlaybackSpeeed(bool v) { Set(&_LOCAL_CFG_::enableFixedPlaybackSpeed, v); }
    // Kept as a float, handed out truncated.
    int GetFixedPlaybackSpeed() const;
    void SetFixedPlaybackSpeed(int v) { Set(&_LOCAL_CFG_::fixedPlaybackSpeed, static_cast<float>(v)); }
    int GetImgSaveFormat() const { return Get(&_LOCAL_CFG_::imgSaveFormat); }
    void SetImgSaveFormat(int v) { Set(&_LOCAL_CFG_::imgSaveFormat, v); }
    int GetImgQualityType() const { return Get(&_LOCAL_CFG_::imgQualityType); }
    void SetImgQualityType(int v) { Set(&_LOCAL_CFG_::imgQualityType, v); }
    int GetImgQuality() const { return Get(&_LOCAL_CFG_::imgQuality); }
    void SetImgQuality(int v) { Set(&_LOCAL_CFG_::imgQuality, v); }
    int GetImgSaveMode() const { return Get(&_LOCAL_CFG_::imgSaveMode); }
    void SetImgSaveMode(int v) { Set(&_LOCAL_CFG_::imgSaveMode, v); }
    int GetImgSaveSpanFrames() const { return Get(&_LOCAL_CFG_::imgSaveSpanFrames); }
    void SetImgSaveSpanFrames(int v) { Set(&_LOCAL_CFG_::imgSaveSpanFrames, v); }
    bool GetCheckImgSaveFixedFrames() const { return Get(&_LOCAL_CFG_::checkImgSaveFixedFrames); }
    void SetCheckImgSaveFixedFrames(bool v) { Set(&_LOCAL_CFG_::checkImgSaveFixedFrames, v); }
    int GetImgSaveFixedFramesNum() const { return Get(&_LOCAL_CFG_::imgSaveFixedFramesNum); }
    void SetImgSaveFixedFramesNum(int v) { Set(&_LOCAL_CFG_::imgSaveFixedFramesNum, v); }
    int GetImgSaveSpanTime() const { return Get(&_LOCAL_CFG_::imgSaveSpanTime); }
    void SetImgSaveSpanTime(int v) { Set(&_LOCAL_CFG_::imgSaveSpanTime, v); }
    int GetImgSaveSpanTimeUnit() const { return Get(&_LOCAL_CFG_::imgSaveSpanTimeUnit); }
    void SetImgSaveSpanTimeUnit(int v) { Set(&_LOCAL_CFG_::imgSaveSpanTimeUnit, v); }
    bool GetCheckImgSaveFixedTimes() const { return Get(&_LOCAL_CFG_::checkImgSaveFixedTimes); }
    void SetCheckImgSaveFixedTimes(bool v) { Set(&_LOCAL_CFG_::checkImgSaveFixedTimes, v); }
    int GetImgSaveFixedTimeNum() const { return Get(&_LOCAL_CFG_::imgSaveFixedTimeNum); }
    void SetImgSaveFixedTimeNum(int v) { Set(&_LOCAL_CFG_::imgSaveFixedTimeNum, v); }
    int GetImgSaveFixedTimeUnit() const { return Get(&_LOCAL_CFG_::imgSaveFixedTimeUnit); }
    void SetImgSaveFixedTimeUnit(int v) { Set(&_LOCAL_CFG_::imgSaveFixedTimeUnit, v); }
    QString GetImgSavePreFileName() const { return Get(&_LOCAL_CFG_::imgSavePreFileName); }
    void SetImgSavePreFileName(const QString& v) { Set(&_LOCAL_CFG_::imgSavePreFileName, v); }
    int GetImgSaveFileNameIndexType() const { return Get(&_LOCAL_CFG_::imgSaveFileNameIndexType); }
    void SetImgSaveFileNameIndexType(int v) { Set(&_LOCAL_CFG_::imgSaveFileNameIndexType, v); }
    bool GetAutoCheckNetwork() const { return Get(&_LOCAL_CFG_::autoCheckNetwork); }
    void SetAutoCheckNetwork(bool v) { Set(&_LOCAL_CFG_::autoCheckNetwork, v); }
    bool GetAutoCheckThrowFrame() const { return Get(&_LOCAL_CFG_::autoCheckThrowFrame); }
    void SetAutoCheckThrowFrame(bool v) { Set(&_LOCAL_CFG_::autoCheckThrowFrame, v); }
    int GetSDKBufferSize() const { return Get(&_LOCAL_CFG_::sdkBufferSize); }
    void SetSDKBufferSize(int v) { Set(&_LOCAL_CFG_::sdkBufferSize, v); }
    int GetImgSaveBufferSize() const { return Get(&_LOCAL_CFG_::imgSaveBufferSize); }
    void SetImgSaveBufferSize(int v) { Set(&_LOCAL_CFG_::imgSaveBufferSize, v); }
    int GetViewShowFlage() const { return Get(&_LOCAL_CFG_::viewShowFlage); }
    void SetViewShowFlage(int v) { Set(&_LOCAL_CFG_::viewShowFlage, v); }
    int GetStatusShowFlage() const { return Get(&_LOCAL_CFG_::statusShowFlage); }
    void SetStatusShowFlage(int v) { Set(&_LOCAL_CFG_::statusShowFlage, v); }
    // True only when no settings file (or no such entry in it) was found at start.
    bool IsFirstStartClient() const { return Get(&_LOCAL_CFG_::firstStartClient); }
    int GetRenderEngine() const { return Get(&_LOCAL_CFG_::renderEngine); }
    void SetRenderEngine(int v) { Set(&_LOCAL_CFG_::renderEngine, v); }

    int GetLanguageVersion() const;
    void SetLanguageVersion(int v);

private:
    QLocalCfg(QString directory, QString executableDir);
    ~QLocalCfg() override;

    bool LoadDataFromIniFile();
    bool LoadLangDataFromIniFile();

    template<typename T>
    T Get(T _LOCAL_CFG_::*field) const {
        const CMutexLocker lock(&m_mutex);
        return m_values.*field;
    }
    template<typename T>
    void Set(T _LOCAL_CFG_::*field, const T& value) {
        const CMutexLocker lock(&m_mutex);
        m_values.*field = value;
    }

    const QString m_strDirectory;
    const QString m_strExecutableDir;
    mutable QMutex m_mutex; // guards the two below; a leaf, held for one copy
    _LOCAL_CFG_ m_values;
    int m_nLanguage = 0;
};
