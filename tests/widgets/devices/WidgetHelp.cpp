#include "WidgetHelp.h"

#include "UI/Controls/Look.h"

#include <QDir>
#include <QTest>
#include <QTreeWidgetItemIterator>
#include <gtest/gtest.h>

namespace devices {

bool WaitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, kPatienceMs);
}

QString PicturePath(const QString& name) {
    const QString folder = qEnvironmentVariable("KOLT_TEST_OUT", QDir::tempPath());
    QDir().mkpath(folder);
    return folder + "/" + name;
}

void KeepPicture(QWidget& window, const QString& name) {
    EXPECT_TRUE(window.grab().save(PicturePath(name))) << PicturePath(name).toStdString();
}

void ApplyLook() {
    static const bool applied = [] {
        Look::Apply(*qApp);
        return true;
    }();
    ASSERT_TRUE(applied);
}

std::vector<std::string> TreeLines(QTreeWidget* tree) {
    std::vector<std::string> lines;
    for (QTreeWidgetItemIterator item(tree); *item; ++item) {
        std::string indent;
        for (const QTreeWidgetItem* above = (*item)->parent(); above; above = above->parent())
            indent += "  ";
        lines.push_back(indent + (*item)->text(0).toStdString());
    }
    return lines;
}

} // namespace devices
