// Asks for the address of a camera that is to be added by hand.
#pragma once

#include "UI/Controls/QDialogEx.h"

class QLabel;
class QLineEdit;
class QRemoteCameraAdder;

// Modal; accepted once a camera of that address is in the registry. The text is kept for next time, also
// after a cancel. Main thread.
class QAddCameraWidget : public QDialogEx {
    Q_OBJECT

public:
    // `parent` is asked to add the camera (QRemoteCameraAdder); one that can't is taken as one that fails.
    explicit QAddCameraWidget(QWidget* parent = nullptr, int nTitleStyle = kTitlePlain);
    ~QAddCameraWidget() override;

    // Builds the dialog; call it before the rest. A second call changes nothing.
    bool InitWidget();
    void Release();

    QString GetCameraIP() const;
    // -1 before the dialog was accepted.
    long GetCameraID() const { return m_lCameraID; }

public Q_SLOTS:
    void OnBtnOK();

protected:
    void changeEvent(QEvent* event) override;

private:
    void SetTexts();
    void Refuse(const QString& message);
    long FindOrAdd(const QString& text) const;

    QLabel* m_pLabel = nullptr;
    QLineEdit* m_pEdit = nullptr;
    long m_lCameraID = -1;
    QRemoteCameraAdder* m_pAdder = nullptr;
};
