// The records of the message log: what one event is, how events are sorted, and the texts made of them.
#pragma once

#include "Common/QFunction.h"

#include <QDateTime>
#include <QString>
#include <array>
#include <vector>

// One event. The source is in practice "KOLT CAPTURE".
struct _STRU_MSG_LOG_ {
    QDateTime dateTime;
    _MESSAGE_LOG_LEVEL_ level = MESSAGE_LOG_MESSAGE;
    QString source;
    QString text;
};

// The data of the entries of the sort box.
enum MsgLogSort {
    MSG_LOG_SORT_TIME = 0,
    MSG_LOG_SORT_LEVEL = 1,
    MSG_LOG_SORT_SOURCE = 2,
    MSG_LOG_SORT_TEXT = 3
};

// The level of a number that came by a signal; what is no level counts as a message.
_MESSAGE_LOG_LEVEL_ MsgLogLevelOf(int number);

// Orders: true where `a` stands before `b`. Each is strict, so equals keep no order of their own.
bool SortByDataTime(const _STRU_MSG_LOG_& a, const _STRU_MSG_LOG_& b);
bool SortByLogLevel(const _STRU_MSG_LOG_& a, const _STRU_MSG_LOG_& b);
bool SortByLogSource(const _STRU_MSG_LOG_& a, const _STRU_MSG_LOG_& b);
bool SortByLogMsg(const _STRU_MSG_LOG_& a, const _STRU_MSG_LOG_& b);

// Sorts by one of MsgLogSort, ascending and not stable; another value changes nothing and gives false.
bool SortMsgLog(std::vector<_STRU_MSG_LOG_>& records, int sort);

// The level's word in the language of now: "Message", "Critical" or "Warning".
QString MsgLogLevelWord(_MESSAGE_LOG_LEVEL_ level);

// "2026-11-20 09:05:07.42": each part at least two digits wide, so 42 milliseconds are ".42" and 5 are ".05".
QString MsgLogTimeText(const QDateTime& dateTime);

// One record as it goes to the clipboard, with "\r\n" at its end. `levelWord` is given by the caller: a card
// copies what it shows.
QString MsgLogCopyText(const QString& levelWord, const QString& source, const QDateTime& dateTime,
                       const QString& text);

// An event in a fixed layout, texts in Latin-1 and ended by a zero; the message has at most 512 characters.
struct FixedMsgLog {
    std::array<char, 20> time;
    int level;
    std::array<char, 129> source;
    std::array<char, 513> text;
};
FixedMsgLog MakeFixedMsgLog(const _STRU_MSG_LOG_& record);
