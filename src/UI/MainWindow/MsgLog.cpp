#include "UI/MainWindow/MsgLog.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>

namespace {

QString Tr(const char* text) {
    return QCoreApplication::translate("QMessageLogWidget", text);
}

QString TwoDigits(int number) {
    return QString("%1").arg(number, 2, 10, QLatin1Char('0'));
}

template<size_t N>
void CopyLatin1(const QString& text, std::array<char, N>& destination) {
    const QByteArray bytes = text.toLatin1();
    const auto length = std::min(static_cast<size_t>(bytes.size()), N - 1);
    std::copy_n(bytes.constData(), length, destination.begin());
    destination.at(length) = '\0';
}

} // namespace

_MESSAGE_LOG_LEVEL_ MsgLogLevelOf(int number) {
    switch (number) {
    case MESSAGE_LOG_CRITICAL:
        return MESSAGE_LOG_CRITICAL;
    case MESSAGE_LOG_WARNING:
        return MESSAGE_LOG_WARNING;
    default:
        return MESSAGE_LOG_MESSAGE;
    }
}

bool SortByDataTime(const _STRU_MSG_LOG_& a, const _STRU_MSG_LOG_& b) {
    return a.dateTime < b.dateTime;
}

bool SortByLogLevel(const _STRU_MSG_LOG_& a, const _STRU_MSG_LOG_& b) {
    return a.level < b.level;
}

bool SortByLogSource(const _STRU_MSG_LOG_& a, const _STRU_MSG_LOG_& b) {
    return a.source < b.source;
}

bool SortByLogMsg(const _STRU_MSG_LOG_& a, const _STRU_MSG_LOG_& b) {
    return a.text < b.text;
}

bool SortMsgLog(std::vector<_STRU_MSG_LOG_>& records, int sort) {
    using Order = bool (*)(const _STRU_MSG_LOG_&, const _STRU_MSG_LOG_&);
    constexpr std::array<Order, 4> orders{SortByDataTime, SortByLogLevel, SortByLogSource, SortByLogMsg};
    if (sort < 0 || static_cast<size_t>(sort) >= orders.size())
        return false;
    // deliberate: a plain sort; events with equal keys keep no guaranteed order.
    std::sort(records.begin(), records.end(), orders.at(static_cast<size_t>(sort)));
    return true;
}

QString MsgLogLevelWord(_MESSAGE_LOG_LEVEL_ level) {
    switch (level) {
    case MESSAGE_LOG_CRITICAL:
        return Tr(QT_TRANSLATE_NOOP("QMessageLogWidget", "Critical"));
    case MESSAGE_LOG_WARNING:
        return Tr(QT_TRANSLATE_NOOP("QMessageLogWidget", "Warning"));
    default:
        return Tr(QT_TRANSLATE_NOOP("QMessageLogWidget", "Message"));
    }
}

QString MsgLogTimeText(const QDateTime& dateTime) {
    const QDate date = dateTime.date();
    const QTime time = dateTime.time();
    // deliberate: the milliseconds too are padded to two digits only.
    return QString("%1-%2-%3").arg(TwoDigits(date.year()), TwoDigits(date.month()), TwoDigits(date.day())) +
           ' ' +
           QString("%1:%2:%3.%4")
               .arg(TwoDigits(time.hour()), TwoDigits(time.minute()), TwoDigits(time.second()),
                    TwoDigits(time.msec()));
}

QString MsgLogCopyText(const QString& levelWord, const QString& source, const QDateTime& dateTime,
                       const QString& text) {
    const auto labelled = [](const char* label) { return Tr(label) + ' '; };
    const QString gap(4, QLatin1Char(' '));
    return labelled(QT_TRANSLATE_NOOP("QMessageLogWidget", "Level:")) + levelWord + gap +
           labelled(QT_TRANSLATE_NOOP("QMessageLogWidget", "Source:")) + source + gap +
           labelled(QT_TRANSLATE_NOOP("QMessageLogWidget", "Time:")) + MsgLogTimeText(dateTime) + gap +
           labelled(QT_TRANSLATE_NOOP("QMessageLogWidget", "Message:")) + text + "\r\n";
}

FixedMsgLog MakeFixedMsgLog(const _STRU_MSG_LOG_& record) {
    FixedMsgLog fixed{};
    const QDate date = record.dateTime.date();
    const QTime time = record.dateTime.time();
    std::snprintf(fixed.time.data(), fixed.time.size(), "%04d-%02d-%02d %02d:%02d:%02d", date.year(),
                  date.month(), date.day(), time.hour(), time.minute(), time.second());
    fixed.level = record.level;
    CopyLatin1(record.source, fixed.source);
    CopyLatin1(record.text, fixed.text);
    return fixed;
}
