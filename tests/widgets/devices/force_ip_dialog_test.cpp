// The dialog that asks for a new address.
#include "DeviceListFixture.h"
#include "FakePing.h"

#include "Camera/QDeviceDetectThread.h"
#include "UI/MainWindow/QForceIPWidget.h"
#include "support/TextFit.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace devices {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char kSilent[] = "exit 1";
const char kAnswers[] = "echo 'time=0.04 ms'";
const char kSlow[] = "exec /bin/sleep 60";

class ForceIpDialog : public WidgetFixture {
protected:
    void SetUp() override {
        WidgetFixture::SetUp();
        dialog = std::make_unique<QForceIPWidget>();
        ASSERT_TRUE(dialog->InitWidget());
        dialog->SetCurDeviceIP(0xC0A80114); // 192.168.1.20
        dialog->setModal(true);
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
    }
    void TearDown() override {
        dialog.reset();
        WidgetFixture::TearDown();
    }
    QLineEdit* Edit() const { return dialog->findChild<QLineEdit*>("forceIpEdit"); }
    void PressOK(const QString& text) {
        Edit()->setText(text);
        QTest::mouseClick(dialog->GetOKBtn(), Qt::LeftButton);
    }
    bool WaitForPing() {
        return WaitFor([this] { return dialog->GetOKBtn()->isEnabled(); });
    }
    std::unique_ptr<QForceIPWidget> dialog;
};

TEST_F(ForceIpDialog, ShowsThePresentAddress) {
    EXPECT_EQ(dialog->windowTitle(), "Edit IP Address");
    EXPECT_EQ(dialog->size(), QSize(374, 206));
    EXPECT_EQ(dialog->minimumSize(), dialog->maximumSize());
    EXPECT_EQ(Edit()->text(), "192.168.1.20");
    QStringList labels;
    for (const QLabel* label : dialog->findChildren<QLabel*>())
        labels << label->text();
    EXPECT_TRUE(labels.contains("Editing IP address to make device reachable."));
    EXPECT_TRUE(labels.contains("IP address:"));
    EXPECT_TRUE(dialog->InitWidget()) << "a second time changes nothing";
    EXPECT_EQ(dialog->findChildren<QLineEdit*>().size(), 1);
}

TEST_F(ForceIpDialog, AddressesThatAreNoneKeepItOpen) {
    const FakePing ping(folder.path(), kSilent);
    for (const char* text : {"", "10.0.0", "10.0.0.", "10.0.0.256", "10.0.0.x", "127.0.0.1", "0.1.2.3",
                             "224.0.0.1", "255.1.1.1", "10.0.0.1.2", " 10.0.0.1", "1..2.3"}) {
        PressOK(text);
        EXPECT_THAT(Messages(), ElementsAre("Please make sure the IP address is valid.||1")) << text;
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_TRUE(dialog->GetOKBtn()->isEnabled());
    }
}

TEST_F(ForceIpDialog, TheSameAddressDoesNothing) {
    const FakePing ping(folder.path(), kSilent);
    for (int i = 0; i < 2; ++i) {
        PressOK("192.168.1.20");
        EXPECT_TRUE(dialog->GetOKBtn()->isEnabled()) << "nobody is pinged";
        EXPECT_TRUE(dialog->isVisible());
    }
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(ForceIpDialog, AFreeAddressIsTaken) {
    const FakePing ping(folder.path(), kSilent);
    PressOK("10.0.0.77");
    ASSERT_TRUE(WaitFor([this] { return !dialog->isVisible(); }));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_EQ(dialog->GetEditIP(), Ip(77));
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(ForceIpDialog, EnterIsOK) {
    const FakePing ping(folder.path(), kSilent);
    Edit()->setText("10.0.0.77");
    Edit()->setFocus();
    QTest::keyClick(Edit(), Qt::Key_Return);
    ASSERT_TRUE(WaitFor([this] { return !dialog->isVisible(); }));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(ForceIpDialog, AnAddressThatAnswersIsRefused) {
    const FakePing ping(folder.path(), kAnswers);
    // On a busy machine the answer may come too late once or twice: then the address is taken as free.
    ASSERT_TRUE(WaitFor([this] {
        dialog->show();
        PressOK("10.0.0.77");
        return WaitForPing() && dialog->isVisible();
    }));
    EXPECT_THAT(Messages(), ElementsAre("The IP address is used by other device.||1"));
    EXPECT_FALSE(Edit()->isReadOnly()) << "for another try";
}

TEST_F(ForceIpDialog, ASlowAnswerCountsAsFree) {
    const FakePing ping(folder.path(), kSlow);
    PressOK("10.0.0.77");
    EXPECT_FALSE(dialog->GetOKBtn()->isEnabled()) << "no second ping meanwhile";
    EXPECT_TRUE(Edit()->isReadOnly());
    ASSERT_TRUE(WaitFor([this] { return !dialog->isVisible(); }));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(ForceIpDialog, AnAddressOfTheRegistryIsRefusedAlsoWhenSilent) {
    const FakePing ping(folder.path(), kSilent);
    Gige camera;
    camera.ip = Ip(77);
    QDeviceDetectThread::AddCamera(UsbRecord());
    QDeviceDetectThread::AddCamera(GigeRecord(camera));
    PressOK("10.0.0.77");
    ASSERT_TRUE(WaitForPing());
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_THAT(Messages(), ElementsAre("The IP address is used by other device.||1"));
    EXPECT_TRUE(QForceIPWidget::IsOtherDeviceUsed(Ip(77)));
    EXPECT_FALSE(QForceIPWidget::IsOtherDeviceUsed(Ip(78)));
}

TEST_F(ForceIpDialog, ThePartsOfAnAddress) {
    struct Row {
        const char* text;
        unsigned ip;
    };
    for (const Row row : {Row{"1.2.3.4", 0x01020304}, Row{"255.254.253.252", 0xFFFEFDFC}, Row{"1.2.3", 0},
                          Row{"1.2.3.4.5", 0}, Row{"", 0}}) {
        Edit()->setText(row.text);
        EXPECT_EQ(dialog->GetEditIP(), row.ip) << row.text;
    }
    EXPECT_TRUE(dialog->IsIPAddrChanged(1));
    EXPECT_FALSE(dialog->IsIPAddrChanged(0xC0A80114));
}

TEST_F(ForceIpDialog, ItsEndDuringAPing) {
    const FakePing ping(folder.path(), kSlow);
    PressOK("10.0.0.77");
    dialog->OnBtnCancel();
    EXPECT_FALSE(dialog->isVisible());
    dialog.reset();
    QCoreApplication::processEvents();
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(ForceIpDialog, EscapeDoesNothing) {
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(ForceIpDialog, Pictures) {
    KeepPicture(*dialog, "force-ip.png");
    const FakePing ping(folder.path(), kSlow);
    PressOK("10.0.0.77");
    KeepPicture(*dialog, "force-ip-asking.png");
    ASSERT_TRUE(WaitFor([this] { return !dialog->isVisible(); }));
}

TEST_F(ForceIpDialog, FitsInBothLanguages) {
    Edit()->setText("223.255.255.255");
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(*dialog), IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(*dialog, {"OK"}), IsEmpty());
}

} // namespace
} // namespace devices
