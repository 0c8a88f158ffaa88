// Asks for a new address for a camera that can't be reached from this host, and makes sure that nobody else
// has it.
#pragma once

#include "UI/Controls/QDialogEx.h"

#include <memory>

class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPingThread;

// Modal; accepted with an address that is valid, new and free, which GetEditIP then tells. Main thread.
class QForceIPWidget : public QDialogEx {
    Q_OBJECT

public:
    explicit QForceIPWidget(QWidget* parent = nullptr, int nTitleStyle = kTitlePlain);
    ~QForceIPWidget() override;

    // Builds the dialog; call it before the rest. A second call changes nothing.
    bool InitWidget();
    void Release();

    // Addresses in host order.
    void SetCurDeviceIP(unsigned int ip);
    // 0 unless the field has four parts.
    unsigned int GetEditIP() const;
    // The address differs from the camera's present one.
    bool IsIPAddrChanged(unsigned int ip) const { return ip != m_nCurrentIP; }
    // A camera of the registry has the address.
    static bool IsOtherDeviceUsed(unsigned int ip);

    // How a ping reads on another system; nothing calls it.
    static bool PingIPAddr(const QString& address);

public Q_SLOTS:
    void OnBtnOK();
    void OnPingThreadEnd();

protected:
    void changeEvent(QEvent* event) override;

private:
    void SetTexts();
    void Refuse(const QString& message);

    QLabel* m_pHint = nullptr;
    QLabel* m_pLabel = nullptr;
    QLineEdit* m_pEdit = nullptr;
    unsigned int m_nCurrentIP = 0;
    std::unique_ptr<QPingThread> m_pPing;
};
