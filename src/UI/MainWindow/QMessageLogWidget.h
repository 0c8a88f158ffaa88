// One card of the message log: level by colour, icon and word, source, time and message of one event.
#pragma once

#include "UI/MainWindow/MsgLog.h"

#include <QWidget>

class QLabel;
class QWrappedTextLabel;

// Made by QMsgLogWidgetMng and used again for later events. Main thread.
class QMessageLogWidget : public QWidget {
    Q_OBJECT

public:
    // Fixed, in pixels: the list sizes itself by it.
    static constexpr int kHeight = 120;

    explicit QMessageLogWidget(QWidget* parent = nullptr);

    // Fills the card for a new event, whose time is now.
    void SetMsgLogInfo(_MESSAGE_LOG_LEVEL_ level, const QString& source, const QString& text);

    // Fills the card again with an event that the log already has.
    void ReSetMsgLogInfoBySort(_MESSAGE_LOG_LEVEL_ level, const QString& source, const QString& text,
                               const QDateTime& dateTime);

    // The event that the card shows.
    const _STRU_MSG_LOG_& GetMsgLogInfo() const { return m_record; }

Q_SIGNALS:
    // From the card's context menu, for the log as a whole.
    void SigCopyAll();
    void SigClearLog();

public Q_SLOTS:
    // At a place within the card. The menu stays open by itself; the call returns at once.
    void OnShowContextMenu(const QPoint& position);

    // The card's content to the clipboard, as MsgLogCopyText tells.
    void OnActionCopy();

    // Sets the labels again, in the language of now.
    void RefreshWidgetInfo();

    void changeEvent(QEvent* event) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void Fill();

    _STRU_MSG_LOG_ m_record;
    QLabel* m_levelLabel;
    QLabel* m_sourceLabel;
    QLabel* m_timeLabel;
    QLabel* m_messageLabel;
    QLabel* m_icon;
    QLabel* m_level;
    QLabel* m_source;
    QLabel* m_time;
    QWrappedTextLabel* m_message;
};
