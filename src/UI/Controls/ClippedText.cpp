#include "UI/Controls/ClippedText.h"

#include "UI/Controls/Look.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QStaticLabel.h"
#include "UI/Controls/QStatusLabel.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QWidget>

namespace Look {

namespace {

// Fractions of scaled fonts round up to a pixel here and there.
constexpr int kTolerance = 1;

bool Holds(const QSize& room, const QSize& wanted) {
    return wanted.width() <= room.width() + kTolerance && wanted.height() <= room.height() + kTolerance;
}

struct Finding {
    QString text;
    QSize room;
    QSize wanted;
};

Finding OfLabel(const QLabel& label) {
    QSize wanted = label.sizeHint();
    if (label.wordWrap())
        wanted = QSize(label.width(), label.heightForWidth(label.width()));
    return {label.text(), label.size(), wanted};
}

// The words alone: a button may be laid out with less padding than its style would like.
Finding OfButton(const QAbstractButton& button) {
    if (button.text().isEmpty())
        return {};
    if (button.inherits("QCheckBox") || button.inherits("QRadioButton"))
        return {button.text(), button.size(), button.sizeHint()};
    const QSize words = button.fontMetrics().size(Qt::TextShowMnemonic, button.text());
    const auto* image = qobject_cast<const QImageButton*>(&button);
    return {button.text(), button.size(), image ? image->sizeHint() : words + QSize(8, 2)};
}

Finding OfCombo(const QComboBox& combo) {
    QStyleOptionComboBox option;
    option.initFrom(&combo);
    option.editable = combo.isEditable();
    const QRect room =
        combo.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &combo);
    return {combo.currentText(), room.size(),
            QSize(combo.fontMetrics().horizontalAdvance(combo.currentText()), 1)};
}

QStringList OfMenuBar(const QMenuBar& bar) {
    QStringList hidden;
    for (QAction* action : bar.actions())
        if (action->isVisible() && !bar.rect().contains(bar.actionGeometry(action)))
            hidden += QString("QMenuBar \"%1\" is not shown").arg(action->text());
    return hidden;
}

Finding OfWidget(const QWidget& widget) {
    if (qobject_cast<const QStaticLabel*>(&widget))
        return {};
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return OfLabel(*label);
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return OfButton(*button);
    if (const auto* combo = qobject_cast<const QComboBox*>(&widget))
        return OfCombo(*combo);
    if (const auto* group = qobject_cast<const QGroupBox*>(&widget))
        return {group->title(), group->size(),
                QSize(group->fontMetrics().horizontalAdvance(group->title()) + 24, 1)};
    if (const auto* status = qobject_cast<const QStatusLabel*>(&widget))
        return {status->text(), status->size(),
                QSize(FigureWidth(status->fontMetrics(), status->text()), status->fontMetrics().height())};
    return {};
}

} // namespace

namespace {

// The part of the widget that its parents leave to be seen; whole for what can be scrolled into view.
QSize RoomInParents(const QWidget& widget) {
    QRect room = widget.rect();
    for (const QWidget* parent = &widget; !parent->isWindow(); parent = parent->parentWidget()) {
        const QWidget* next = parent->parentWidget();
        if (next->inherits("QAbstractScrollArea") || next->parentWidget() == nullptr)
            break;
        room = room.translated(parent->pos()).intersected(next->rect());
        room.translate(-parent->pos());
    }
    return room.size();
}

} // namespace

QStringList ClippedTexts(const QWidget& window) {
    QStringList lines;
    QList<const QWidget*> widgets{&window};
    for (const QWidget* child : window.findChildren<QWidget*>())
        widgets += child;
    for (const QWidget* widget : widgets) {
        if (!widget->isVisible())
            continue;
        if (const auto* bar = qobject_cast<const QMenuBar*>(widget))
            lines += OfMenuBar(*bar);
        Finding finding = OfWidget(*widget);
        const QSize seen = RoomInParents(*widget);
        if (seen != widget->size())
            finding.room = finding.room.boundedTo(seen);
        if (finding.text.isEmpty() || Holds(finding.room, finding.wanted))
            continue;
        lines += QString("%1 %2 \"%3\" has %4 x %5, wants %6 x %7")
                     .arg(widget->metaObject()->className(), widget->objectName(), finding.text)
                     .arg(finding.room.width())
                     .arg(finding.room.height())
                     .arg(finding.wanted.width())
                     .arg(finding.wanted.height());
    }
    return lines;
}

} // namespace Look
