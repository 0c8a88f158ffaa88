#include "KitFixture.h"

#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QDialogEx.h"

#include <QApplication>
#include <QDialog>
#include <QMouseEvent>
#include <QWindow>

using kit_test::Kit;

struct ResizeRow {
    Qt::Edges edges;
    QPoint way;
    QRect result;
};

class Resized : public testing::TestWithParam<ResizeRow> {};

// From (100, 100), 200 by 100, between 150 by 80 and 300 by 160.
TEST_P(Resized, KeepsTheOppositeEdgesAndTheLimits) {
    const QRect start(100, 100, 200, 100);
    EXPECT_EQ(ResizedByEdges(start, GetParam().edges, GetParam().way, QSize(150, 80), QSize(300, 160)),
              GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, Resized,
    testing::Values(ResizeRow{Qt::RightEdge, {20, 50}, QRect(100, 100, 220, 100)},
                    ResizeRow{Qt::LeftEdge, {20, 50}, QRect(120, 100, 180, 100)},
                    ResizeRow{Qt::TopEdge, {20, -10}, QRect(100, 90, 200, 110)},
                    ResizeRow{Qt::BottomEdge, {20, -10}, QRect(100, 100, 200, 90)},
                    ResizeRow{Qt::LeftEdge | Qt::TopEdge, {-10, -10}, QRect(90, 90, 210, 110)},
                    ResizeRow{Qt::RightEdge | Qt::BottomEdge, {10, 10}, QRect(100, 100, 210, 110)},
                    ResizeRow{Qt::LeftEdge | Qt::BottomEdge, {10, 10}, QRect(110, 100, 190, 110)},
                    ResizeRow{Qt::RightEdge | Qt::TopEdge, {10, 10}, QRect(100, 110, 210, 90)},
                    // Limits: the opposite edge stays, also when the pointer goes on.
                    ResizeRow{Qt::LeftEdge, {120, 0}, QRect(150, 100, 150, 100)},
                    ResizeRow{Qt::LeftEdge, {-900, 0}, QRect(0, 100, 300, 100)},
                    ResizeRow{Qt::RightEdge, {-900, 0}, QRect(100, 100, 150, 100)},
                    ResizeRow{Qt::TopEdge, {0, 900}, QRect(100, 120, 200, 80)},
                    ResizeRow{Qt::BottomEdge, {0, 900}, QRect(100, 100, 200, 160)},
                    ResizeRow{Qt::Edges(), {50, 50}, QRect(100, 100, 200, 100)}));

TEST(ResizedByEdges, NeverGoesBelowOnePixel) {
    EXPECT_EQ(ResizedByEdges(QRect(0, 0, 10, 10), Qt::RightEdge | Qt::BottomEdge, QPoint(-50, -50),
                             QSize(0, 0), QSize(100, 100)),
              QRect(0, 0, 1, 1));
}

struct EdgeRow {
    QPoint place;
    Qt::Edges edges;
};

class EdgesOfAWindow : public testing::TestWithParam<EdgeRow> {};

// 400 by 300.
TEST_P(EdgesOfAWindow, AreFoundUnderThePointer) {
    EXPECT_EQ(EdgesAt(QSize(400, 300), GetParam().place), GetParam().edges);
}

INSTANTIATE_TEST_SUITE_P(
    Places, EdgesOfAWindow,
    testing::Values(EdgeRow{{1, 150}, Qt::LeftEdge}, EdgeRow{{398, 150}, Qt::RightEdge},
                    EdgeRow{{200, 1}, Qt::TopEdge}, EdgeRow{{200, 298}, Qt::BottomEdge},
                    EdgeRow{{1, 1}, Qt::LeftEdge | Qt::TopEdge},
                    EdgeRow{{398, 298}, Qt::RightEdge | Qt::BottomEdge},
                    EdgeRow{{398, 1}, Qt::RightEdge | Qt::TopEdge},
                    EdgeRow{{1, 298}, Qt::LeftEdge | Qt::BottomEdge},
                    EdgeRow{{Look::grip - 1, 150}, Qt::LeftEdge}, EdgeRow{{Look::grip, 150}, {}},
                    EdgeRow{{400 - Look::grip, 150}, Qt::RightEdge}, EdgeRow{{399 - Look::grip, 150}, {}},
                    // The corners reach further along the frame than into the window.
                    EdgeRow{{2 * Look::grip - 1, 0}, Qt::LeftEdge | Qt::TopEdge},
                    EdgeRow{{2 * Look::grip, 0}, Qt::TopEdge}, EdgeRow{{2 * Look::grip - 1, Look::grip}, {}},
                    EdgeRow{{0, 2 * Look::grip - 1}, Qt::LeftEdge | Qt::TopEdge}, EdgeRow{{200, 150}, {}},
                    EdgeRow{{-1, 150}, {}}, EdgeRow{{400, 150}, {}}, EdgeRow{{200, 300}, {}}));

// Moves and presses are given to the native window, as the window system does.
class Grips : public Kit {
protected:
    static void Move(QWidget& window, const QPoint& place, Qt::MouseButtons buttons = Qt::NoButton) {
        Send(window, QEvent::MouseMove, place, Qt::NoButton, buttons);
    }
    static void Send(QWidget& window, QEvent::Type type, const QPoint& place, Qt::MouseButton button,
                     Qt::MouseButtons buttons) {
        QMouseEvent event(type, place, place, window.mapToGlobal(place), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(window.windowHandle(), &event);
    }
    static int Cursor() {
        const QCursor* const shown = QGuiApplication::overrideCursor();
        return shown ? shown->shape() : -1;
    }
};

TEST_F(Grips, NothingLiesOverTheContent) {
    QDialog window;
    QWidget content(&window);
    CFrameGrips grips(&window);
    window.resize(400, 300);
    content.setGeometry(0, 0, 400, 300);
    kit_test::Show(window);
    for (const QPoint place : {QPoint(0, 0), QPoint(399, 150), QPoint(200, 299)})
        EXPECT_EQ(window.childAt(place), &content);
}

TEST_F(Grips, ShowTheRightCursorsAlongTheFrame) {
    QDialog window;
    CFrameGrips grips(&window);
    window.resize(400, 300);
    kit_test::Show(window);
    const struct {
        QPoint place;
        int cursor;
    } rows[] = {
        {{1, 150}, Qt::SizeHorCursor},   {{398, 150}, Qt::SizeHorCursor}, {{200, 1}, Qt::SizeVerCursor},
        {{200, 298}, Qt::SizeVerCursor}, {{1, 1}, Qt::SizeFDiagCursor},   {{398, 298}, Qt::SizeFDiagCursor},
        {{398, 1}, Qt::SizeBDiagCursor}, {{1, 298}, Qt::SizeBDiagCursor}, {{200, 150}, -1}};
    for (const auto& row : rows) {
        Move(window, row.place);
        EXPECT_EQ(Cursor(), row.cursor) << row.place.x() << "," << row.place.y();
    }
    Move(window, QPoint(1, 150));
    Move(window, QPoint(1, 160), Qt::LeftButton);
    EXPECT_EQ(Cursor(), Qt::SizeHorCursor);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(window.windowHandle(), &leave);
    EXPECT_EQ(Cursor(), -1);
    Move(window, QPoint(1, 150), Qt::LeftButton);
    EXPECT_EQ(Cursor(), -1) << "something else is being dragged";
    Move(window, QPoint(1, 150));
    grips.SetEnabled(false);
    EXPECT_EQ(Cursor(), -1);
    Move(window, QPoint(1, 150));
    EXPECT_EQ(Cursor(), -1);
}

TEST_F(Grips, TheCursorGoesWithTheWindow) {
    {
        QDialog window;
        CFrameGrips grips(&window);
        window.resize(400, 300);
        kit_test::Show(window);
        Move(window, QPoint(1, 150));
        EXPECT_EQ(Cursor(), Qt::SizeHorCursor);
    }
    EXPECT_EQ(Cursor(), -1);
}

TEST_F(Grips, ResizeByGeometryWithoutAWindowManager) {
    QDialog window;
    CFrameGrips grips(&window);
    window.setMinimumSize(200, 150);
    window.setGeometry(100, 100, 400, 300);
    kit_test::Show(window);
    const QPoint at(398, 298);
    Send(window, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
    Move(window, at + QPoint(50, 20), Qt::LeftButton);
    EXPECT_EQ(window.geometry(), QRect(100, 100, 450, 320));
    Move(window, at - QPoint(900, 900), Qt::LeftButton);
    EXPECT_EQ(window.geometry(), QRect(100, 100, 200, 150));
    Send(window, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
    Move(window, at, Qt::LeftButton);
    EXPECT_EQ(window.geometry(), QRect(100, 100, 200, 150));
}

TEST_F(Grips, APressInsideReachesTheContent) {
    class Content : public QWidget {
    public:
        using QWidget::QWidget;
        int presses = 0;

    protected:
        void mousePressEvent(QMouseEvent*) override { ++presses; }
    };
    QDialog window;
    Content content(&window);
    CFrameGrips grips(&window);
    window.resize(400, 300);
    content.setGeometry(0, 0, 400, 300);
    kit_test::Show(window);
    for (const QPoint place : {QPoint(200, 150), QPoint(1, 150)}) {
        Send(window, QEvent::MouseButtonPress, place, Qt::LeftButton, Qt::LeftButton);
        Send(window, QEvent::MouseButtonRelease, place, Qt::LeftButton, Qt::NoButton);
        EXPECT_EQ(content.presses, 1);
    }
    Send(window, QEvent::MouseButtonPress, QPoint(1, 150), Qt::RightButton, Qt::RightButton);
    EXPECT_EQ(content.presses, 2) << "only the left button resizes";
}

TEST_F(Grips, DialogsHaveNoneUnlessAsked) {
    QDialogEx dialog;
    dialog.resize(400, 300);
    kit_test::Show(dialog);
    Move(dialog, QPoint(1, 150));
    EXPECT_EQ(Cursor(), -1);
    dialog.SetResizable(true);
    Move(dialog, QPoint(1, 150));
    EXPECT_EQ(Cursor(), Qt::SizeHorCursor);
    dialog.SetResizable(false);
    EXPECT_EQ(Cursor(), -1);
}
