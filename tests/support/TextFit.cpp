#include "support/TextFit.h"

#include "Common/CLanguageSwitch.h"
#include "support/ShownTexts.h"

#include <QCoreApplication>
#include <QEvent>
#include <QRegularExpression>
#include <QWidget>
#include <stdexcept>

namespace kolt::test {

namespace {

// Fonts measure to fractions of a pixel; a control of the exact size of its text may come out one too small.
constexpr int kTolerance = 1;

// The state after everything that a change of language or of texts has set off.
void Settle(QWidget& window) {
    // A layout may change sizes on which another one waits; three rounds are more than any window of ours
    // wants.
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        QCoreApplication::processEvents();
    }
    if (!window.isVisible())
        throw std::logic_error("the window to check isn't visible");
}

class CInChinese {
public:
    explicit CInChinese(QWidget& window) : m_languages(KOLT_TRANSLATIONS_DIR), m_window(window) {
        m_languages.Init(CLanguageSwitch::Chinese);
        if (m_languages.GetLanguage() != CLanguageSwitch::Chinese)
            throw std::runtime_error("no translations in " KOLT_TRANSLATIONS_DIR);
        Settle(window);
    }
    ~CInChinese() {
        m_languages.SwitchToEnglish();
        Settle(m_window);
    }
    CInChinese(const CInChinese&) = delete;
    CInChinese& operator=(const CInChinese&) = delete;

private:
    CLanguageSwitch m_languages;
    QWidget& m_window;
};

} // namespace

std::ostream& operator<<(std::ostream& out, const TextMisfit& misfit) {
    const auto size = [](QSize s) { return std::to_string(s.width()) + " x " + std::to_string(s.height()); };
    return out << misfit.language.toStdString() << ": \"" << misfit.text.toStdString() << "\" takes "
               << size(misfit.needed) << " and has " << size(misfit.room) << " in "
               << misfit.where.toStdString();
}

std::vector<TextMisfit> FindMisfits(QWidget& window, const QString& language) {
    Settle(window);
    std::vector<TextMisfit> misfits;
    for (const ShownText& shown : CollectShownTexts(window)) {
        const QSize room = shown.room + QSize(kTolerance, kTolerance);
        const bool fits = shown.needed.width() <= room.width() && shown.needed.height() <= room.height();
        if (!fits && shown.toolTip != shown.text)
            misfits.push_back({language, shown.where, shown.text, shown.needed, shown.room});
    }
    return misfits;
}

std::vector<TextMisfit> FindMisfitsInAllLanguages(QWidget& window) {
    window.show();
    std::vector<TextMisfit> misfits = FindMisfits(window, "English");
    const CInChinese chinese(window);
    for (TextMisfit& misfit : FindMisfits(window, "Chinese"))
        misfits.push_back(misfit);
    return misfits;
}

QStringList FindTextsThatStayEnglish(QWidget& window, const QStringList& names) {
    static const QRegularExpression word("[A-Za-z]{2}");
    window.show();
    Settle(window);
    const std::vector<ShownText> english = CollectShownTexts(window);
    const CInChinese chinese(window);
    QStringList found;
    for (const ShownText& now : CollectShownTexts(window)) {
        if (names.contains(now.text) || !word.match(now.text).hasMatch())
            continue;
        for (const ShownText& before : english) {
            if (before.where == now.where && before.text == now.text)
                found << now.text + " in " + now.where;
        }
    }
    return found;
}

} // namespace kolt::test
