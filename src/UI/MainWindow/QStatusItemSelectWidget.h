// The panel with one check box per item of the status bar, and "All".
#pragma once

#include "UI/MainWindow/StatusItems.h"

#include <QWidget>
#include <array>
#include <cstdint>

class QButtonGroup;
class QCheckBoxEx;

// Main thread. The choice lives in the setting "View/StatusShowFlage".
class QStatusItemSelectWidget : public QWidget {
    Q_OBJECT

public:
    // Throws std::bad_alloc when it can't be built.
    explicit QStatusItemSelectWidget(QWidget* parent = nullptr);

    // From and to the setting, despite their names.
    void LoadFromXmlFile();
    void SaveToXmlFile();
    // False for numbers above 13, and for the line rate without a line-scan camera.
    bool IsItemChecked(int nIndex) const;
    // Shows or hides the box of an item.
    void SetItemVisible(int nIndex, bool bVisible);
    void SetLineCamera(bool bLine);
    void SetAllItemChecked(bool bChecked);
    // Each time the panel opens: sets "All" from the boxes, or the boxes from the remembered "All".
    void UpdateCheckState();
    void RefreshWidgetInfo();

    QCheckBoxEx* Box(int nIndex) const { return m_boxes[static_cast<size_t>(nIndex)]; }

public Q_SLOTS:
    void OnBtnClicked(int nBtnIndex);

Q_SIGNALS:
    void SigItemToggled(int nIndex, bool bChecked);

protected:
    void changeEvent(QEvent* event) override;

private:
    bool InitWidget();

    std::array<QCheckBoxEx*, kStatusItems + 1> m_boxes{}; // in the order of the numbers, "All" last
    QButtonGroup* m_pGroup = nullptr;
    uint32_t m_nFlags = 0;
    bool m_bLineCamera = false;
    bool m_bAll = false;
};
