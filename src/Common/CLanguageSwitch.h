// The language of the user interface: English, which the sources are written in, or Chinese.
#pragma once

#include <QString>
#include <QTranslator>

// Owns the two translators of the program and puts them into the application object or takes them out. Each
// change reaches every widget as QEvent::LanguageChange; a widget re-reads its texts in its changeEvent.
// Needs an application object. Main thread.
class CLanguageSwitch {
public:
    // The values are those of the language setting.
    enum Language { English = 0, Chinese = 1 };

    // `folder` holds "KOLT_en.qm" and "qt_zh_CN.qm", as the program's folder does.
    explicit CLanguageSwitch(const QString& folder);
    CLanguageSwitch(); // the program's folder
    ~CLanguageSwitch();
    CLanguageSwitch(const CLanguageSwitch&) = delete;
    CLanguageSwitch& operator=(const CLanguageSwitch&) = delete;

    // At the program's start, with the value of the setting. 0 is English. 1 is Chinese if both files can be
    // loaded; with the first alone the program's own texts are Chinese, and GetLanguage() stays as it was.
    // Other values change nothing.
    void Init(int setting);

    // By the user's choice. Chinese is the language from then on even where a file is missing: texts
    // without a translation stay English.
    void SwitchToEnglish();
    void SwitchToChinese();

    Language GetLanguage() const { return m_language; }

private:
    static bool LoadAndInstall(QTranslator& translator, const QString& file);
    void RemoveBoth();

    QString m_clientFile;
    QString m_qtFile;
    QTranslator m_clientTranslator;
    QTranslator m_qtTranslator;
    Language m_language = English;
};
