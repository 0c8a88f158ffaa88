// What a style sheet can't say.
#pragma once

#include <QProxyStyle>

// The base style under the style sheet: rows of one height, the focus of lists shown on the current row (the
// style sheet draws the other focus rings), tabs without a line below them, lists of combo boxes that drop
// down below the box, tool tips after half a second.
class CKoltStyle : public QProxyStyle {
    Q_OBJECT

public:
    CKoltStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
};
