#include "Common/QFunction.h"
#include "Common/CMutexLocker.h"

#include <QStringList>
#include <QTime>
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <utility>

QFunction* QFunction::ms_pSingleFunction = nullptr;
std::atomic<long> QFunction::ms_lCameraIDIndex{0};
std::unique_ptr<char32_t[]> QFunction::m_pWideChars;
long QFunction::lDataLen = 64;

namespace {

constexpr int kLongestText = 0x800000;

QMutex g_instanceMutex; // guards ms_pSingleFunction

QFunction::MessagePresenter& Presenter() {
    static QFunction::MessagePresenter presenter;
    return presenter;
}

// The user's locale for one conversion of this thread, whatever the process uses elsewhere.
class CUserLocale {
public:
    CUserLocale()
        : m_locale(newlocale(LC_ALL_MASK, "", nullptr)), m_former(m_locale ? uselocale(m_locale) : nullptr) {}
    ~CUserLocale() {
        if (m_locale) {
            uselocale(m_former);
            freelocale(m_locale);
        }
    }
    CUserLocale(const CUserLocale&) = delete;
    CUserLocale& operator=(const CUserLocale&) = delete;

private:
    locale_t m_locale;
    locale_t m_former;
};

bool IsAddressOfFourBytes(const QString& text, QStringList& parts) {
    if (text.isEmpty())
        return false;
    parts = text.split('.');
    if (parts.size() != 4)
        return false;
    return std::all_of(parts.cbegin(), parts.cend(), [](const QString& part) {
        bool fits = false;
        return QFunction::CheckIsNumber(part) && !part.isEmpty() && part.toUInt(&fits) <= 255 && fits;
    });
}

} // namespace

QFunction* QFunction::Instance() {
    const CMutexLocker lock(&g_instanceMutex);
    if (!ms_pSingleFunction)
        ms_pSingleFunction = new QFunction;
    return ms_pSingleFunction;
}

void QFunction::Release() {
    const CMutexLocker lock(&g_instanceMutex);
    delete ms_pSingleFunction;
    ms_pSingleFunction = nullptr;
    m_pWideChars.reset();
}

long QFunction::GetCameraIDIndex() {
    return ++ms_lCameraIDIndex;
}

void QFunction::InsertMessageLog(_MESSAGE_LOG_LEVEL_ level, const QString& source, const QString& message) {
    Q_EMIT SigShowMessage(level, source, message);
}

void QFunction::ShowStatusBarMsg(const QString& message, int timeout) {
    Q_EMIT SigShowStatusBarMsg(message, timeout);
}

uint32_t QFunction::GetIP(const QString& text) {
    if (text.isEmpty())
        return 0;
    uint32_t address = 0;
    for (int part = 0; part < 4; ++part)
        address = (address << 8) | static_cast<uint32_t>(text.section('.', part, part).toInt());
    return address;
}

QString QFunction::GetIP(uint32_t address) {
    return QString("%1.%2.%3.%4")
        .arg(address >> 24)
        .arg((address >> 16) & 255)
        .arg((address >> 8) & 255)
        .arg(address & 255);
}

QString QFunction::GetMacAddr(uint64_t address) {
    char text[40];
    const auto byte = [address](int shift) { return static_cast<unsigned>((address >> shift) & 255); };
    std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", byte(40), byte(32), byte(24), byte(16),
                  byte(8), byte(0));
    return QString::fromLatin1(text);
}

QString QFunction::Int2HexNumberQString(int number) {
    return QString("0x") + QString::number(static_cast<unsigned>(number), 16);
}

QString QFunction::CharsToQString(const char* text, int length) {
    if (!text || length < 1 || length > kLongestText)
        return {};
    if (!m_pWideChars || length > lDataLen)
        m_pWideChars = std::make_unique<char32_t[]>(static_cast<size_t>(std::max<long>(length, lDataLen)));
    // deliberate: the usable length shrinks as well as it grows, so a longer text after a shorter one
    // allocates anew.
    lDataLen = length;

    static_assert(sizeof(wchar_t) == sizeof(char32_t), "wide characters are UCS-4 here");
    const std::string source(text, strnlen(text, static_cast<size_t>(length)));
    const auto capacity = static_cast<size_t>(length);
    std::fill_n(m_pWideChars.get(), capacity, U'\0');
    const CUserLocale locale;
    std::mbstowcs(reinterpret_cast<wchar_t*>(m_pWideChars.get()), source.c_str(), capacity);
    const char32_t* end = std::find(m_pWideChars.get(), m_pWideChars.get() + capacity, U'\0');
    return QString::fromUcs4(m_pWideChars.get(), static_cast<int>(end - m_pWideChars.get()));
}

void QFunction::QStringToChars(const QString& text, char* destination, int stop, size_t capacity) {
    if (!destination || capacity == 0)
        return;
    const QByteArray bytes = text.toLocal8Bit();
    // deliberate: the third argument is the stop character, though callers give their buffer's size there.
    memccpy(destination, bytes.constData(), stop, std::min(static_cast<size_t>(bytes.size()), capacity - 1));
}

float QFunction::QString2Float(const QString& text) {
    return static_cast<float>(text.toDouble() + 1e-08);
}

bool QFunction::CheckIsNumber(const QString& text) {
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c >= '0' && c <= '9'; });
}

bool QFunction::CheckIPAddress(const QString& text) {
    QStringList parts;
    if (!IsAddressOfFourBytes(text, parts))
        return false;
    const unsigned first = parts.first().toUInt();
    return first >= 1 && first <= 223 && first != 127;
}

bool QFunction::CheckSubNetMask(const QString& text) {
    QStringList parts;
    return IsAddressOfFourBytes(text, parts);
}

void QFunction::RemoveIllegalChar(QString& text) {
    for (const char c : {'%', '/', ':', '?', '>', '\\', '\'', '"', '*', '<', '|'})
        text.remove(QLatin1Char(c), Qt::CaseSensitive);
}

void QFunction::ShowMessage(QWidget* parent, const QString& message, const QString& detail,
                            const QString& title, int kind) {
    if (const auto& present = Presenter())
        present(parent, message, detail, title, kind);
}

void QFunction::SetMessagePresenter(MessagePresenter presenter) {
    Presenter() = std::move(presenter);
}

void QFunction::InsertDbgViewLog(const QString& /*text*/) {
    // deliberate: the time is made and dropped; the call is a hook for a debug view.
    (void)QTime::currentTime().toString("hh:mm:ss.zzz");
}
