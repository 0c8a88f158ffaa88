// The row under the picture: a button that opens the choice of items, and the items.
#pragma once

#include "UI/MainWindow/StatusItems.h"

#include <QWidget>
#include <array>
#include <functional>

class QHBoxLayout;
class QImageButton;
class QStatusLabel;

// Items from the right; the argument of QPrevStatusBar::IsStatusLabelVisiable.
enum STATUS_ITEM_INDEX_ENUM {
    STATUS_ITEM_TEMPERATURE = 0,
    STATUS_ITEM_ZOOM,
    STATUS_ITEM_YUV,
    STATUS_ITEM_RGB,
    STATUS_ITEM_LOCATION,
    STATUS_ITEM_DISPLAY_RATE,
    STATUS_ITEM_LOST_PACKET,
    STATUS_ITEM_ERROR,
    STATUS_ITEM_IMAGE,
    STATUS_ITEM_BANDWIDTH,
    STATUS_ITEM_RESOLUTION,
    STATUS_ITEM_ACQUISITION,
    STATUS_ITEM_LINE_RATE,
};

// Main thread. Which items show is the choice of QStatusItemSelectWidget, asked through `isChecked`.
class QPrevStatusBar : public QWidget {
    Q_OBJECT

public:
    // Throws std::bad_alloc when it can't be built. `isChecked` tells whether the item of a number is chosen.
    explicit QPrevStatusBar(std::function<bool(int)> isChecked, QWidget* parent = nullptr);

    // Whole texts, as they are shown.
    void SetLineRate(const QString& text) { SetItem(kStatusLineRate, text); }
    void SetFrameRate(const QString& text) { SetItem(kStatusAcquisitionRate, text); }
    void SetRecvFrameNum(long number);
    void SetBandWidth(const QString& text) { SetItem(kStatusBandwidth, text); }
    void SetImageSize(const QString& text) { SetItem(kStatusResolution, text); }
    void SetLostFrameNum(const QString& text) { SetItem(kStatusErrors, text); }
    void SetLostPacketNum(const QString& text) { SetItem(kStatusPacketsLost, text); }
    void SetDisplayRate(const QString& text) { SetItem(kStatusDisplayRate, text); }
    void SetLocate(const QString& text) { SetItem(kStatusLocation, text); }
    void SetRGBInfo(int r, int g, int b);
    void SetYUVInfo(int y, int u, int v);
    void SetZoomInfo(const QString& text) { SetItem(kStatusZoom, text); }
    void SetTemperatureInfo(const QString& text) { SetItem(kStatusTemperature, text); }

    // True shows the chosen items and the button, false hides all.
    void UpdateStatsBar(bool bShow);
    // Every item to its idle text.
    void ResetStatusBarInfo();
    // A line-scan camera has a line rate.
    void SetLineCamera(bool bLine);
    // The line rate only for a line-scan camera.
    void SetAllStatusItemVisible(bool bVisible);
    // Deliberate: answers whether the item is hidden; false for a number above the last item's.
    bool IsStatusLabelVisiable(int nItem) const;

    QStatusLabel* Item(int nItem) const { return m_items[static_cast<size_t>(nItem)]; }
    QImageButton* ExpandButton() const { return m_pBtnExpand; }

public Q_SLOTS:
    void OnItemSelectWidgetToggled(int nIndex, bool bChecked);
    void OnBtnSubView();

Q_SIGNALS:
    void SigSubViewBtnPressed(int iBtnIndex);
    void SigItemSelectBtnPressed(int iBtnIndex);

private:
    bool InitWidget();
    void SetItem(int nItem, const QString& text);

    const std::function<bool(int)> m_isChecked;
    QImageButton* m_pBtnExpand = nullptr;
    std::array<QStatusLabel*, kStatusItems> m_items{};
    QHBoxLayout* m_pLayout = nullptr;
    bool m_bLineCamera = false;
};
