#include "KitFixture.h"

#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/QDialogEx.h"

#include <QDialog>

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

class Grips : public Kit {
protected:
    static QList<QWidget*> Of(QWidget& window) { return window.findChildren<QWidget*>("frameGrip"); }
    static QWidget* At(QWidget& window, const QPoint& place) {
        QWidget* child = window.childAt(place);
        return child && child->objectName() == "frameGrip" ? child : nullptr;
    }
};

TEST_F(Grips, StandAlongTheFrameWithTheRightCursors) {
    QDialog window;
    CFrameGrips grips(&window);
    window.resize(400, 300);
    kit_test::Show(window);
    const struct {
        QPoint place;
        Qt::CursorShape cursor;
    } rows[] = {{{1, 150}, Qt::SizeHorCursor},   {{398, 150}, Qt::SizeHorCursor},
                {{200, 1}, Qt::SizeVerCursor},   {{200, 298}, Qt::SizeVerCursor},
                {{1, 1}, Qt::SizeFDiagCursor},   {{398, 298}, Qt::SizeFDiagCursor},
                {{398, 1}, Qt::SizeBDiagCursor}, {{1, 298}, Qt::SizeBDiagCursor}};
    for (const auto& row : rows) {
        QWidget* grip = At(window, row.place);
        ASSERT_TRUE(grip) << row.place.x() << "," << row.place.y();
        EXPECT_EQ(grip->cursor().shape(), row.cursor) << row.place.x() << "," << row.place.y();
    }
    EXPECT_FALSE(At(window, QPoint(200, 150)));
    window.resize(500, 350);
    QCoreApplication::processEvents();
    EXPECT_TRUE(At(window, QPoint(498, 348)));
}

TEST_F(Grips, ResizeByGeometryWithoutAWindowManager) {
    QDialog window;
    CFrameGrips grips(&window);
    window.setMinimumSize(200, 150);
    window.setGeometry(100, 100, 400, 300);
    kit_test::Show(window);
    QWidget* grip = At(window, QPoint(398, 298));
    ASSERT_TRUE(grip);
    const QPoint from = grip->mapToGlobal(QPoint(2, 2));
    QMouseEvent press(QEvent::MouseButtonPress, QPoint(2, 2), from, Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(grip, &press);
    QMouseEvent move(QEvent::MouseMove, QPoint(), from + QPoint(50, 20), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(grip, &move);
    EXPECT_EQ(window.geometry(), QRect(100, 100, 450, 320));
    QMouseEvent far(QEvent::MouseMove, QPoint(), from - QPoint(900, 900), Qt::NoButton, Qt::LeftButton,
                    Qt::NoModifier);
    QApplication::sendEvent(grip, &far);
    EXPECT_EQ(window.geometry(), QRect(100, 100, 200, 150));
    QMouseEvent release(QEvent::MouseButtonRelease, QPoint(), from, Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(grip, &release);
    QApplication::sendEvent(grip, &move);
    EXPECT_EQ(window.geometry(), QRect(100, 100, 200, 150));
}

TEST_F(Grips, DialogsHaveNoneUnlessAsked) {
    QDialogEx dialog;
    dialog.resize(400, 300);
    kit_test::Show(dialog);
    for (const QWidget* grip : Of(dialog))
        EXPECT_FALSE(grip->isVisible());
    dialog.SetResizable(true);
    EXPECT_EQ(Of(dialog).size(), 8);
    for (const QWidget* grip : Of(dialog))
        EXPECT_TRUE(grip->isVisible());
}
