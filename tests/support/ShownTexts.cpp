#include "support/ShownTexts.h"

#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStyle>
#include <QStyleOption>
#include <QTabBar>
#include <QTextDocument>
#include <QToolButton>
#include <algorithm>

namespace kolt::test {

namespace {

// Qt keeps the description of a control for its style to the control's own family.
template<class Control>
struct Description : Control {
    template<class Option, class... Index>
    static Option Of(const Control& control, Index... index) {
        Option option;
        (control.*&Description::initStyleOption)(&option, index...);
        return option;
    }
};

struct HeaderSection : QHeaderView {
    static QSize Needed(const QHeaderView& header, int section) {
        return (header.*&HeaderSection::sectionSizeFromContents)(section);
    }
};

// "QDialog/content:QWidget/2:QPushButton": the number counts the children before it.
QString PathTo(const QWidget& widget) {
    const QString kind = widget.metaObject()->className();
    QString name = widget.objectName();
    const QWidget* parent = widget.parentWidget();
    if (widget.isWindow() || !parent)
        return name.isEmpty() ? kind : name + ":" + kind;
    if (name.isEmpty())
        name = QString::number(parent->children().indexOf(const_cast<QWidget*>(&widget)));
    return PathTo(*parent) + "/" + name + ":" + kind;
}

// What the widget itself and its parents leave of a part of it. A scroll area cuts nothing off for good.
QSize Uncut(const QWidget& widget, QRect part) {
    part &= widget.rect();
    for (const QWidget* inner = &widget; !inner->isWindow() && inner->parentWidget();
         inner = inner->parentWidget()) {
        const auto* area = qobject_cast<const QAbstractScrollArea*>(inner->parentWidget()->parentWidget());
        if (area && area->viewport() == inner->parentWidget())
            break;
        part = part.translated(inner->pos()) & inner->parentWidget()->rect();
    }
    return part.size();
}

// Height is that of the ink: a fallback font may have tall lines around small letters.
QSize Extent(const QWidget& widget, const QString& text) {
    const QFontMetrics metrics = widget.fontMetrics();
    const QStringList lines = text.split('\n');
    int width = 0;
    for (const QString& line : lines)
        width = std::max(width, metrics.size(Qt::TextShowMnemonic | Qt::TextSingleLine, line).width());
    const int ink = metrics.tightBoundingRect(text).height();
    return {width, lines.size() == 1 ? ink : lines.size() * metrics.lineSpacing()};
}

class CCollector {
public:
    std::vector<ShownText> Collect(QWidget& window) {
        Look(window);
        const auto widgets = window.findChildren<QWidget*>();
        for (QWidget* widget : widgets) {
            if (widget->isVisibleTo(&window) && widget->window() == window.window())
                Look(*widget);
        }
        return std::move(m_texts);
    }

private:
    void Add(const QWidget& widget, const QString& part, const QString& text, QSize needed, QRect room,
             const QString& toolTip = {}) {
        if (text.trimmed().isEmpty())
            return;
        m_texts.push_back({PathTo(widget) + part, text, toolTip.isEmpty() ? widget.toolTip() : toolTip,
                           needed, Uncut(widget, room)});
    }

    void Look(QWidget& widget) {
        widget.ensurePolished();
        if (const auto* label = qobject_cast<QLabel*>(&widget))
            LookAtLabel(*label);
        else if (const auto* button = qobject_cast<QAbstractButton*>(&widget))
            LookAtButton(*button);
        else if (const auto* box = qobject_cast<QGroupBox*>(&widget))
            LookAtGroupBox(*box);
        else if (const auto* combo = qobject_cast<QComboBox*>(&widget))
            LookAtComboBox(*combo);
        else if (const auto* edit = qobject_cast<QLineEdit*>(&widget))
            LookAtLineEdit(*edit);
        else if (const auto* bar = qobject_cast<QTabBar*>(&widget))
            LookAtTabs(*bar);
        else if (const auto* menus = qobject_cast<QMenuBar*>(&widget))
            LookAtMenuBar(*menus);
        else if (const auto* header = qobject_cast<QHeaderView*>(&widget))
            LookAtHeader(*header);
        else if (const auto* list = qobject_cast<QListWidget*>(&widget))
            LookAtList(*list);
    }

    void LookAtLabel(const QLabel& label) {
        const QString text = label.text();
        const int margin = label.margin();
        const QRect room = label.contentsRect().adjusted(margin, margin, -margin, -margin);
        const bool rich = label.textFormat() == Qt::RichText ||
                          (label.textFormat() == Qt::AutoText && Qt::mightBeRichText(text));
        QSize needed = Extent(label, text);
        if (rich) {
            QTextDocument document;
            document.setDefaultFont(label.font());
            document.setDocumentMargin(0);
            document.setHtml(text);
            if (label.wordWrap())
                document.setTextWidth(room.width());
            needed = QSizeF(document.idealWidth(), document.size().height()).toSize();
        } else if (label.wordWrap()) {
            const QRect wrapped = label.fontMetrics().boundingRect(
                QRect(0, 0, room.width(), 100000), Qt::TextWordWrap | Qt::TextExpandTabs, text);
            needed = {wrapped.width(), wrapped.height()};
        }
        Add(label, {}, text, needed, room);
    }

    void LookAtButton(const QAbstractButton& button) {
        QSize needed = Extent(button, button.text());
        QRect room = button.contentsRect();
        const auto part = [&](QStyle::SubElement element, const QStyleOption& option) {
            return button.style()->subElementRect(element, &option, &button);
        };
        if (const auto* push = qobject_cast<const QPushButton*>(&button)) {
            const auto option = Description<QPushButton>::Of<QStyleOptionButton>(*push);
            room = part(QStyle::SE_PushButtonContents, option);
            if (option.features & QStyleOptionButton::HasMenu)
                needed.rwidth() +=
                    button.style()->pixelMetric(QStyle::PM_MenuButtonIndicator, &option, &button);
            if (!button.icon().isNull())
                needed.rwidth() += button.iconSize().width() + 4;
        } else if (const auto* check = qobject_cast<const QCheckBox*>(&button)) {
            room = part(QStyle::SE_CheckBoxContents, Description<QCheckBox>::Of<QStyleOptionButton>(*check));
        } else if (const auto* radio = qobject_cast<const QRadioButton*>(&button)) {
            room = part(QStyle::SE_RadioButtonContents,
                        Description<QRadioButton>::Of<QStyleOptionButton>(*radio));
        } else if (const auto* tool = qobject_cast<const QToolButton*>(&button)) {
            if (tool->toolButtonStyle() == Qt::ToolButtonIconOnly && !button.icon().isNull())
                return;
            if (tool->toolButtonStyle() == Qt::ToolButtonTextBesideIcon && !button.icon().isNull())
                needed.rwidth() += button.iconSize().width() + 4;
        }
        Add(button, {}, button.text(), needed, room);
    }

    void LookAtGroupBox(const QGroupBox& box) {
        const auto option = Description<QGroupBox>::Of<QStyleOptionGroupBox>(box);
        const QRect label =
            box.style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, &box);
        Add(box, {}, box.title(), Extent(box, box.title()),
            {label.topLeft(), QPoint(box.width() - 1, box.height() - 1)});
    }

    void LookAtComboBox(const QComboBox& combo) {
        const auto option = Description<QComboBox>::Of<QStyleOptionComboBox>(combo);
        const QRect room =
            combo.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &combo);
        for (int entry = 0; entry < combo.count(); ++entry) {
            QSize needed = Extent(combo, combo.itemText(entry));
            if (!combo.itemIcon(entry).isNull())
                needed.rwidth() += combo.iconSize().width() + 4;
            Add(combo, QString("[%1]").arg(entry), combo.itemText(entry), needed, room,
                combo.itemData(entry, Qt::ToolTipRole).toString());
        }
    }

    void LookAtLineEdit(const QLineEdit& edit) {
        const bool fixed = edit.isReadOnly() || qobject_cast<const QAbstractSpinBox*>(edit.parentWidget());
        const QString text = edit.text().isEmpty() ? edit.placeholderText() : edit.text();
        if (!fixed && !edit.text().isEmpty())
            return; // what a person types scrolls
        const auto option = Description<QLineEdit>::Of<QStyleOptionFrame>(edit);
        constexpr int kOwnMargin = 2; // QLineEdit keeps as much free on either side of its text
        const QRect room = edit.style()
                               ->subElementRect(QStyle::SE_LineEditContents, &option, &edit)
                               .marginsRemoved(edit.textMargins())
                               .adjusted(kOwnMargin, 0, -kOwnMargin, 0);
        Add(edit, {}, text, Extent(edit, text), room);
    }

    void LookAtTabs(const QTabBar& bar) {
        for (int tab = 0; tab < bar.count(); ++tab) {
            const auto option = Description<QTabBar>::Of<QStyleOptionTab>(bar, tab);
            const QRect room = bar.style()->subElementRect(QStyle::SE_TabBarTabText, &option, &bar);
            Add(bar, QString("[%1]").arg(tab), bar.tabText(tab), Extent(bar, bar.tabText(tab)), room,
                bar.tabToolTip(tab));
        }
    }

    void LookAtMenuBar(const QMenuBar& bar) {
        int number = 0;
        for (QAction* action : bar.actions()) {
            if (action->isVisible() && !action->isSeparator())
                Add(bar, QString("[%1]").arg(number++), action->text(), Extent(bar, action->text()),
                    bar.actionGeometry(action));
        }
    }

    void LookAtHeader(const QHeaderView& header) {
        if (header.orientation() != Qt::Horizontal || !header.model())
            return;
        for (int section = 0; section < header.count(); ++section) {
            if (header.isSectionHidden(section))
                continue;
            const QRect room(0, 0, header.sectionSize(section), header.height());
            Add(header, QString("[%1]").arg(section),
                header.model()->headerData(section, Qt::Horizontal).toString(),
                HeaderSection::Needed(header, section), room,
                header.model()->headerData(section, Qt::Horizontal, Qt::ToolTipRole).toString());
        }
    }

    void LookAtList(const QListWidget& list) {
        for (int row = 0; row < list.count(); ++row) {
            const QListWidgetItem* item = list.item(row);
            if (item->isHidden())
                continue;
            const auto hint = [&] {
                QStyleOptionViewItem option;
                option.initFrom(&list);
                option.widget = &list;
                option.font = list.font();
                option.fontMetrics = list.fontMetrics();
                option.decorationSize = list.iconSize();
                return list.itemDelegate()->sizeHint(option, list.model()->index(row, 0));
            };
            const QSize needed(hint().width(), Extent(list, item->text()).height());
            const QRect place = list.visualItemRect(item);
            Add(list, QString("[%1]").arg(row), item->text(), needed,
                {0, 0, list.viewport()->width(), place.height()}, item->toolTip());
        }
    }

    std::vector<ShownText> m_texts;
};

} // namespace

std::vector<ShownText> CollectShownTexts(QWidget& window) {
    return CCollector().Collect(window);
}

} // namespace kolt::test
