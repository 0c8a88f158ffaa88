#include "UI/Controls/QMainWindowEx.h"

#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QTitleBar.h"
#include "UI/Controls/QTitleBarUbuntu.h"
#include "UI/Controls/SystemKind.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <new>

QMainWindowEx::QMainWindowEx(QWidget* parent) : QDialog(parent), m_bUbuntu(IsUbuntuSystem()) {
    if (!QMainWindowEx::InitWidget())
        throw std::bad_alloc();
}

QMainWindowEx::~QMainWindowEx() = default;

bool QMainWindowEx::InitWidget() {
    if (m_pTitleBar)
        return true;
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint);
    m_pTitleBar = m_bUbuntu ? new QTitleBarUbuntu(this) : new QTitleBar(this);
    m_pContent = new QWidget(this);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(1, 1, 1, 1);
    whole->setSpacing(0);
    whole->addWidget(m_pTitleBar);
    whole->addWidget(m_pContent, 1);
    m_pGrips = new CFrameGrips(this);
    return static_cast<bool>(
        connect(m_pTitleBar, &QTitleBar::SigTitleButtonClicked, this, &QMainWindowEx::OnTitleButtonClicked));
}

void QMainWindowEx::SetTitleText(const QString& strTitle) {
    setWindowTitle(strTitle);
    m_pTitleBar->SetTitleText(strTitle);
}

QMenuBarEx* QMainWindowEx::MenuBar() const {
    return m_pTitleBar->MenuBar();
}

void QMainWindowEx::SetLayoutEx(QLayout* pLayout) {
    delete m_pContent->layout();
    m_pContent->setLayout(pLayout);
}

void QMainWindowEx::AddTitleBarMenu(const QString& strText, QMenuEx* pMenu) {
    m_pTitleBar->AddTitleBarMenu(strText, pMenu);
}

void QMainWindowEx::OnTitleButtonClicked(int nType) {
    if (nType == QTitleBar::kMaximise || nType == QTitleBar::kRestore)
        m_pGrips->SetEnabled(nType == QTitleBar::kRestore);
}

void QMainWindowEx::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    update(); // the frame's line moves with the edge
}

void QMainWindowEx::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        return; // deliberate: swallowed, Escape never closes the program
    QDialog::keyPressEvent(event);
}

void QMainWindowEx::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Look::canvas));
    painter.setPen(QColor(Look::fieldLine));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
