#include "UI/MainWindow/QWrappedTextLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QTextLayout>
#include <QToolTip>
#include <algorithm>

namespace {

// Breaks the text as QTextLayout does, at most `limit` lines; the last one takes all the rest, cut to the
// width.
QStringList Break(const QString& text, const QFont& font, int width, int limit, bool& cut) {
    QString shown = text;
    shown.remove('\r').replace('\n', QChar::LineSeparator);
    QTextLayout layout(shown, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    std::vector<int> starts;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        starts.push_back(line.textStart());
    }
    layout.endLayout();

    const int count = std::min(static_cast<int>(starts.size()), limit);
    cut = static_cast<int>(starts.size()) > limit;
    QStringList lines;
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<size_t>(i);
        const bool last = i + 1 == count;
        const int end = last || index + 1 == starts.size() ? shown.size() : starts[index + 1];
        QString line = shown.mid(starts[index], end - starts[index]);
        if (last && cut)
            line = QFontMetrics(font).elidedText(line.replace(QChar::LineSeparator, ' ') + QChar(0x2026),
                                                 Qt::ElideRight, width);
        lines << line.remove(QChar::LineSeparator).trimmed();
    }
    return lines;
}

} // namespace

QWrappedTextLabel::QWrappedTextLabel(int lineHeight, QWidget* parent)
    : QLabel(parent), m_lineHeight(lineHeight) {
    // Texts come from cameras too: what looks like markup in one is shown as it stands.
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
}

QStringList QWrappedTextLabel::Lines(bool& isCut) const {
    const QRect room = contentsRect();
    return Break(text(), font(), room.width(), std::max(1, room.height() / m_lineHeight), isCut);
}

QStringList QWrappedTextLabel::GetShownLines() const {
    bool isCut = false;
    return Lines(isCut);
}

bool QWrappedTextLabel::IsCut() const {
    bool isCut = false;
    Lines(isCut);
    return isCut;
}

void QWrappedTextLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    QRect line = contentsRect();
    line.setHeight(m_lineHeight);
    for (const QString& text : GetShownLines()) {
        style()->drawItemText(&painter, line, Qt::AlignLeft | Qt::AlignVCenter, option.palette, isEnabled(),
                              text, foregroundRole());
        line.translate(0, m_lineHeight);
    }
}

bool QWrappedTextLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && IsCut()) {
        // Escaped, since a tool tip guesses at markup.
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                           "<p>" + text().toHtmlEscaped() + "</p>", this);
        return true;
    }
    return QLabel::event(event);
}
