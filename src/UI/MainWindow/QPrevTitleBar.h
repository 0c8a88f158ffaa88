// The strip over the picture: the camera's name, and how long a recording runs.
#pragma once

#include <QTimer>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QStaticLabel;

// Main thread.
class QPrevTitleBar : public QWidget {
    Q_OBJECT

public:
    // Throws std::bad_alloc when it can't be built.
    explicit QPrevTitleBar(QWidget* parent = nullptr);

    void SetTitle(const QString& text);
    // `bRecord` tells a recording from a picture series. Only a recording has a clock; (false, false) hides
    // both labels but leaves a running clock alone.
    void SetRecordState(bool bRecord, bool bOn);
    // True shows the red dot, false an empty picture.
    void SetRecordImg(bool bShow);

    QStaticLabel* TitleLabel() const { return m_pTitle; }
    QLabel* TimeLabel() const { return m_pTime; }
    QLabel* IconLabel() const { return m_pIcon; }

public Q_SLOTS:
    void OnTimerOut();    // a second of recording
    void OnImgTimerOut(); // half a second of blinking

private:
    bool InitWidget();
    void ShowTime();
    void ShowRecord(bool bShow);

    QStaticLabel* m_pTitle = nullptr;
    QLabel* m_pIcon = nullptr;
    QLabel* m_pTime = nullptr;
    QHBoxLayout* m_pLayout = nullptr;
    QHBoxLayout* m_pRecordLayout = nullptr;
    int m_nHours = 0;
    int m_nMinutes = 0;
    int m_nSeconds = 0;
    QTimer m_timerClock;
    QTimer m_timerBlink;
    bool m_bBlink = true;
};
