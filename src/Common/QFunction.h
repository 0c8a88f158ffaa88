// Helpers that every layer uses: error texts, status mapping, addresses, text conversion, and the two signals
// by which any thread reaches the message log and the status bar.
#pragma once

#include <QMutex>
#include <QObject>
#include <QString>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class QWidget;

// Level of an entry in the message log.
enum _MESSAGE_LOG_LEVEL_ { MESSAGE_LOG_MESSAGE = 0, MESSAGE_LOG_CRITICAL = 1, MESSAGE_LOG_WARNING = 2 };

// Kind of a message dialog.
enum _MESSAGE_KIND_ { MESSAGE_INFORMATION = 0, MESSAGE_ERROR = 1, MESSAGE_WARNING = 2 };

// The singleton. It lives from the first Instance() to Release(); its signals may be emitted from any thread,
// receivers on the main thread connect queued. All other operations say in their comment when they are not
// for any thread.
class QFunction : public QObject {
    Q_OBJECT

public:
    // Builds and runs the message dialog; registered by the widget kit at start, called on the main thread.
    using MessagePresenter = std::function<void(QWidget* parent, const QString& message,
                                                const QString& detail, const QString& title, int kind)>;

    static QFunction* Instance();
    static void Release();

    // A new camera id: 1 first, never given twice in a process. Any thread.
    static long GetCameraIDIndex();

    // Any thread.
    void InsertMessageLog(_MESSAGE_LOG_LEVEL_ level, const QString& source, const QString& message);
    void ShowStatusBarMsg(const QString& message, int timeout);

    // Addresses in host order: the first octet is in the top byte. The text is not checked (see
    // CheckIPAddress); "" is 0.
    static uint32_t GetIP(const QString& text);
    static QString GetIP(uint32_t address);

    // "0A:1B:..." of the lower 48 bits.
    static QString GetMacAddr(uint64_t address);

    // Text for the user of a program error code (0 success, negative errors).
    static QString GenerateCameraOperateError(int code);

    // Program error code of a library status (OvStatus.h); -105 for what is not known.
    static int GenerateORVErrCode(uint32_t status);

    static QString Int2HexNumberQString(int number);

    // Text of `length` bytes at most in the user's locale; empty for a length below 1 or above 0x800000. One
    // thread at a time: the conversion buffer is shared.
    static QString CharsToQString(const char* text, int length);

    // Copies the local 8-bit form of `text` without adding a terminator (callers clear their buffer first)
    // and stops after a byte that equals `stop`. Takes at most `capacity` - 1 bytes, so that a cleared buffer
    // stays terminated.
    static void QStringToChars(const QString& text, char* destination, int stop, size_t capacity);
    template<size_t N>
    static void QStringToChars(const QString& text, char (&destination)[N], int stop) {
        QStringToChars(text, destination, stop, N);
    }

    static float QString2Float(const QString& text);

    static bool CheckIsNumber(const QString& text);
    static bool CheckIPAddress(const QString& text);
    static bool CheckSubNetMask(const QString& text);
    static void RemoveIllegalChar(QString& text);

    // Main thread. Without a presenter nothing is shown.
    static void ShowMessage(QWidget* parent, const QString& message, const QString& detail,
                            const QString& title, int kind);
    static void SetMessagePresenter(MessagePresenter presenter);

    void InsertDbgViewLog(const QString& text);
    void InsertLogToText() {}
    void OV_GetMilliseconds() {}

Q_SIGNALS:
    void SigShowMessage(int nMsgLogLevel, QString strSource, QString strMsg);
    void SigShowStatusBarMsg(QString message, int timeout);

private:
    QFunction() = default;
    ~QFunction() override = default;

    static QFunction* ms_pSingleFunction; // guarded by a mutex in QFunction.cpp
    static std::atomic<long> ms_lCameraIDIndex;
    static std::unique_ptr<char32_t[]> m_pWideChars; // conversion buffer of CharsToQString
    static long lDataLen;                            // characters of it that may be used
};
