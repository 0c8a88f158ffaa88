#include "Common/CLanguageSwitch.h"

#include <QCoreApplication>

// The sources are English and need no file, so the client's file with the "en" name holds the Chinese texts
// of the program; those of Qt's own controls and dialogs are in the other one.
CLanguageSwitch::CLanguageSwitch(const QString& folder)
    : m_clientFile(folder + "/KOLT_en.qm"), m_qtFile(folder + "/qt_zh_CN.qm") {}

CLanguageSwitch::CLanguageSwitch() : CLanguageSwitch(QCoreApplication::applicationDirPath()) {}

CLanguageSwitch::~CLanguageSwitch() {
    if (QCoreApplication::instance())
        RemoveBoth();
}

void CLanguageSwitch::Init(int setting) {
    if (setting == English) {
        SwitchToEnglish();
    } else if (setting == Chinese) {
        if (LoadAndInstall(m_clientTranslator, m_clientFile) && LoadAndInstall(m_qtTranslator, m_qtFile))
            m_language = Chinese;
    }
}

void CLanguageSwitch::SwitchToEnglish() {
    RemoveBoth();
    m_language = English;
}

void CLanguageSwitch::SwitchToChinese() {
    LoadAndInstall(m_clientTranslator, m_clientFile);
    LoadAndInstall(m_qtTranslator, m_qtFile);
    m_language = Chinese;
}

bool CLanguageSwitch::LoadAndInstall(QTranslator& translator, const QString& file) {
    // Installed twice it would be looked through twice; loaded while installed it would tell every widget of
    // the moment in which it is empty.
    QCoreApplication::removeTranslator(&translator);
    const bool loaded = translator.load(file);
    QCoreApplication::installTranslator(&translator);
    return loaded;
}

void CLanguageSwitch::RemoveBoth() {
    QCoreApplication::removeTranslator(&m_clientTranslator);
    QCoreApplication::removeTranslator(&m_qtTranslator);
}
