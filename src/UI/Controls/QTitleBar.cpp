#include "UI/Controls/QTitleBar.h"

#include "UI/Controls/Look.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMenuBarEx.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/Controls/QStaticLabel.h"
#include "UI/Controls/WindowMove.h"

#include <QApplication>
#include <QDesktopWidget>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPointer>
#include <algorithm>
#include <new>

constexpr int kTitleGap = 12; // between the title and what stands beside it

QTitleBar::QTitleBar(QWidget* parent, ButtonSide side) : QWidget(parent), m_side(side) {
    if (!InitWidget(side))
        throw std::bad_alloc();
}

QImageButton* QTitleBar::MakeButton(const char* picture, const char* name) {
    auto* button = new QImageButton(this);
    button->setObjectName(name);
    button->SetBtnImageSet(QString(":/ORV/Resources/btn/") + picture);
    button->setFixedSize(Look::toolButtonWidth, Look::titleBarHeight - 1);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

bool QTitleBar::InitWidget(ButtonSide side) {
    setObjectName("mainTitleBar");
    setAttribute(Qt::WA_StyledBackground);
    setFixedHeight(Look::titleBarHeight);
    auto* mark = new QLabel(this);
    mark->setPixmap(Look::Picture(":/ORV/Resources/logo.png"));
    m_pMenuBar = new QMenuBarEx(this);
    m_pMenuBar->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    m_pTitle = new QStaticLabel(this);
    m_pTitle->setObjectName("mainTitleText");
    m_pTitle->setTextFormat(Qt::PlainText);
    m_pTitle->setAlignment(Qt::AlignCenter);
    // A press on the title drags the window.
    m_pTitle->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_pBtnMin = MakeButton("minimise", "mainMinimise");
    m_pBtnMax = MakeButton("maximise", "mainMaximise");
    m_pBtnClose = MakeButton("close", "mainClose");

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 1);
    layout->setSpacing(0);
    const auto addMenu = [&] {
        layout->addSpacing(12);
        layout->addWidget(mark);
        layout->addSpacing(8);
        layout->addWidget(m_pMenuBar, 0, Qt::AlignVCenter);
    };
    if (side == kButtonsLeft) {
        for (QImageButton* button : {m_pBtnClose, m_pBtnMin, m_pBtnMax})
            layout->addWidget(button);
        addMenu();
        layout->addStretch(1);
    } else {
        addMenu();
        layout->addStretch(1);
        for (QImageButton* button : {m_pBtnMin, m_pBtnMax, m_pBtnClose})
            layout->addWidget(button);
    }
    RefreshWidgetInfo();
    return connect(m_pBtnMin, &QPushButton::clicked, this, &QTitleBar::OnClickedMinSize) &&
           connect(m_pBtnMax, &QPushButton::clicked, this, &QTitleBar::OnClickedMaxSize) &&
           connect(m_pBtnClose, &QPushButton::clicked, this, &QTitleBar::OnClickedClose);
}

void QTitleBar::RefreshWidgetInfo() {
    m_pBtnMin->setToolTip(tr("Minimize"));
    m_pBtnMax->setToolTip(m_bMaximized ? tr("Restore") : tr("Maximize"));
    m_pBtnClose->setToolTip(tr("Close"));
    m_pMenuBar->setAccessibleName(tr("Menu"));
}

void QTitleBar::SetTitleText(const QString& strTitle) {
    m_pTitle->setText(strTitle);
    PlaceTitle();
}

void QTitleBar::AddTitleBarMenu(const QString& strText, QMenuEx* pMenu) {
    pMenu->setTitle(strText);
    m_pMenuBar->addMenu(pMenu);
}

void QTitleBar::OnClickedMinSize() {
    const QPointer<QTitleBar> self(this);
    Q_EMIT SigTitleButtonClicked(kMinimise);
    if (self)
        window()->showMinimized();
}

void QTitleBar::OnClickedMaxSize() {
    const QPointer<QTitleBar> self(this);
    const bool maximise = !m_bMaximized;
    Q_EMIT SigTitleButtonClicked(maximise ? kMaximise : kRestore);
    if (!self)
        return;
    m_bMaximized = maximise;
    ShowMaximizeState();
    if (maximise) {
        m_rcNormal = window()->geometry();
        window()->setGeometry(QApplication::desktop()->availableGeometry(window()));
    } else {
        window()->showNormal();
        window()->setGeometry(m_rcNormal);
    }
}

void QTitleBar::OnClickedClose() {
    const QPointer<QTitleBar> self(this);
    Q_EMIT SigTitleButtonClicked(kClose);
    if (self)
        window()->close();
}

void QTitleBar::ShowMaximizeState() {
    m_pBtnMax->SetBtnImageSet(m_bMaximized ? ":/ORV/Resources/btn/restore" : ":/ORV/Resources/btn/maximise");
    RefreshWidgetInfo();
}

void QTitleBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_bDragging = true;
    m_ptPress = event->globalPos();
    m_ptWindow = window()->pos();
}

void QTitleBar::mouseMoveEvent(QMouseEvent* event) {
    if (!m_bDragging || m_bMaximized)
        return;
    if (MoveBySystem(*window()))
        m_bDragging = false;
    else
        window()->move(m_ptWindow + event->globalPos() - m_ptPress);
}

void QTitleBar::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_bDragging = false;
}

void QTitleBar::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_bDragging = false;
    OnClickedMaxSize();
}

void QTitleBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    PlaceTitle();
}

bool QTitleBar::event(QEvent* event) {
    const bool result = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest)
        PlaceTitle();
    return result;
}

void QTitleBar::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        RefreshWidgetInfo();
    QWidget::changeEvent(event);
}

// The title stands in the middle of the window, aside where the menu is long, and is elided when nothing else
// helps.
void QTitleBar::PlaceTitle() {
    layout()->activate();
    const int left = m_pMenuBar->geometry().right() + kTitleGap;
    const int right = (m_side == kButtonsRight ? m_pBtnMin->geometry().left() : width()) - kTitleGap;
    const int room = std::max(0, right - left);
    const int wanted = std::min(m_pTitle->sizeHint().width(), room);
    const int x = std::max(left, std::min((width() - wanted) / 2, right - wanted));
    m_pTitle->setGeometry(x, 0, wanted, height() - 1);
    m_pTitle->setVisible(room > 0);
}
