#include "UI/Controls/QImageButton.h"

#include "UI/Controls/Look.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QAdAction.h"
#include "UI/Controls/QMenuEx.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionButton>
#include <QStylePainter>

constexpr int kBlockMs = 200;
constexpr int kGap = 6;     // between picture and text
constexpr int kPadding = 8; // beside a text
constexpr int kArrow = 12;  // room of the arrow that tells of a menu

QImageButton::QImageButton(QWidget* parent)
    : QPushButton(parent), m_clrText(QColor(Look::ink)), m_clrOnText(QColor(Look::accentInk)) {
    setAutoDefault(false);
    setAttribute(Qt::WA_Hover);
    m_timerBlock.setSingleShot(true);
    m_timerBlock.setTimerType(Qt::PreciseTimer);
    m_timerBlock.setInterval(kBlockMs);
    connect(&m_timerBlock, &QTimer::timeout, this, &QImageButton::OnBlockTimer);
    connect(this, &QPushButton::clicked, this, &QImageButton::OnButtonClicked);
    connect(this, &QPushButton::pressed, this, &QImageButton::OnButtonPressed);
    connect(this, &QPushButton::released, this, &QImageButton::OnButtonReleased);
}

void QImageButton::SetBtnImage(const QString& strNormal, const QString& strHover, const QString& strPressed,
                               const QString& strDisabled) {
    const QString* const paths[kPictures] = {&strNormal, &strHover, &strPressed, &strDisabled};
    for (int i = 0; i < kPictures; ++i) {
        m_pictures[i] = paths[i]->isEmpty() ? QPixmap() : Look::Picture(*paths[i]);
        if (m_pictures[i].isNull())
            m_pictures[i] = m_pictures[kNormal];
    }
    updateGeometry();
    update();
}

void QImageButton::SetBtnImageSet(const QString& strBase) {
    SetBtnImage(strBase + ".png", strBase + "_hov.png", strBase + "_sel.png", strBase + "_dis.png");
}

void QImageButton::SetCheckable(bool bCheckable) {
    m_bCheckable = bCheckable;
    if (!bCheckable)
        m_bChecked = false;
    update();
}

void QImageButton::SetCheck(bool bChecked) {
    if (!m_bCheckable)
        return;
    m_bChecked = bChecked;
    update();
}

void QImageButton::SetBtnTextColor(const QColor& colour) {
    m_clrText = colour;
    update();
}

void QImageButton::SetOnBtnTextColor(const QColor& colour) {
    m_clrOnText = colour;
    update();
}

QAdAction* QImageButton::AddMenu(const QString& strText, bool bCheckable, int nMenuIndex) {
    if (!m_pOwnMenu) {
        m_pOwnMenu = new QMenuEx(this);
        SetMenu(m_pOwnMenu);
    }
    auto* action = new QAdAction(strText, nMenuIndex, -1, m_pOwnMenu);
    action->setCheckable(bCheckable);
    m_pOwnMenu->addAction(action);
    connect(action, &QAdAction::SigActionTriggered, this, &QImageButton::OnMenuTriggered);
    return action;
}

void QImageButton::SetMenu(QMenu* pMenu) {
    if (menu() && menu() != pMenu)
        for (QAction* action : menu()->actions())
            disconnect(action, nullptr, this, nullptr);
    setMenu(pMenu);
    if (pMenu && pMenu != m_pOwnMenu) {
        for (QAction* action : pMenu->actions())
            if (auto* indexed = qobject_cast<QAdAction*>(action))
                connect(indexed, &QAdAction::SigActionTriggered, this, &QImageButton::OnMenuTriggered,
                        Qt::UniqueConnection);
    }
    updateGeometry();
    update();
}

QAdAction* QImageButton::FindAction(int nMenuIndex) const {
    if (!menu())
        return nullptr;
    for (QAction* action : menu()->actions()) {
        auto* indexed = qobject_cast<QAdAction*>(action);
        if (indexed && indexed->GetIndex() == nMenuIndex)
            return indexed;
    }
    return nullptr;
}

void QImageButton::SetMenuChecked(int nMenuIndex, bool bChecked) {
    if (QAdAction* action = FindAction(nMenuIndex))
        action->setChecked(bChecked);
}

bool QImageButton::GetMenuCheckd(int nMenuIndex) const {
    const QAdAction* action = FindAction(nMenuIndex);
    return action && action->isChecked();
}

void QImageButton::SetMenuActionEnable(int nMenuIndex, bool bEnable) {
    if (QAdAction* action = FindAction(nMenuIndex))
        action->setEnabled(bEnable);
}

void QImageButton::ControlClickEvent() {
    m_bBlocked = true;
    m_timerBlock.start();
}

void QImageButton::OnBlockTimer() {
    m_bBlocked = false;
    // The release that belonged to an earlier press may have been among the dropped ones.
    if (isDown() && !menu())
        setDown(false);
}

void QImageButton::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !event->isAutoRepeat())
        click();
    else
        QPushButton::keyPressEvent(event);
}

void QImageButton::mousePressEvent(QMouseEvent* event) {
    if (m_bBlocked)
        return;
    QPushButton::mousePressEvent(event);
}

void QImageButton::mouseReleaseEvent(QMouseEvent* event) {
    if (m_bBlocked)
        return;
    QPushButton::mouseReleaseEvent(event);
}

void QImageButton::OnButtonClicked() {
    if (m_bCheckable) {
        m_bChecked = !m_bChecked;
        update();
    }
    Q_EMIT SigButtonClicked(m_iBtnIndex, m_bChecked);
}

void QImageButton::OnButtonPressed() {
    Q_EMIT SigButtonPressed(m_iBtnIndex);
}

void QImageButton::OnButtonReleased() {
    Q_EMIT SigButtonReleased(m_iBtnIndex);
}

void QImageButton::OnMenuTriggered(int nMenuIndex, long lID, bool bChecked) {
    Q_EMIT SigMenuTriggered(m_iBtnIndex, nMenuIndex, lID, bChecked);
}

bool QImageButton::event(QEvent* event) {
    // Pictures say nothing to a screen reader; the tool tip does.
    if (event->type() == QEvent::ToolTipChange && text().isEmpty())
        setAccessibleName(toolTip());
    return QPushButton::event(event);
}

QSize QImageButton::PictureSize() const {
    const QPixmap& picture = m_pictures[kNormal];
    return picture.isNull() ? QSize() : picture.size() / picture.devicePixelRatio();
}

QSize QImageButton::sizeHint() const {
    QSize size = PictureSize().expandedTo(QSize(0, 0));
    if (!text().isEmpty()) {
        const QSize words = fontMetrics().size(Qt::TextShowMnemonic, text());
        size = QSize(size.width() + (size.isEmpty() ? 0 : kGap) + words.width() + 2 * kPadding,
                     std::max(size.height(), words.height()));
    }
    if (menu())
        size.rwidth() += kArrow;
    return size.expandedTo(QSize(Look::iconSize, Look::iconSize));
}

const QPixmap& QImageButton::CurrentPicture() const {
    if (!isEnabled())
        return m_pictures[kDisabled];
    if (isDown() || m_bChecked)
        return m_pictures[kPressed];
    return underMouse() ? m_pictures[kHover] : m_pictures[kNormal];
}

void QImageButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.features &= ~QStyleOptionButton::HasMenu;
    option.state.setFlag(QStyle::State_On, m_bChecked);
    option.state.setFlag(QStyle::State_Off, !m_bChecked);
    painter.drawControl(QStyle::CE_PushButtonBevel, option);

    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QRect room = rect();
    if (menu()) {
        QStyleOption arrow;
        arrow.initFrom(this);
        arrow.rect = QRect(room.right() - kArrow, room.center().y() - 4, 8, 8);
        painter.drawPrimitive(QStyle::PE_IndicatorArrowDown, arrow);
        room.setRight(room.right() - kArrow);
    }
    QSize size = PictureSize();
    if (size.width() > room.width() || size.height() > room.height())
        size.scale(room.size(), Qt::KeepAspectRatio);
    QRect target(QPoint(), size);
    target.moveCenter(room.center());
    if (!text().isEmpty())
        target.moveLeft(room.left() + kPadding);
    if (!size.isEmpty())
        painter.drawPixmap(target, CurrentPicture());
    if (text().isEmpty())
        return;
    if (!size.isEmpty())
        room.setLeft(target.right() + kGap);
    const bool on = isDown() || m_bChecked || underMouse();
    painter.setPen(!isEnabled() ? QColor(Look::disabledInk) : on ? m_clrOnText : m_clrText);
    const int align = size.isEmpty() ? Qt::AlignCenter : Qt::AlignVCenter | Qt::AlignLeft;
    painter.drawText(room, align | Qt::TextShowMnemonic, text());
}
