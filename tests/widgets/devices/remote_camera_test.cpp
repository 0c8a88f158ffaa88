// Adding a camera by its address: the dialog, and what it does.
#include "DeviceListFixture.h"

#include "Camera/QDeviceDetectThread.h"
#include "UI/MainWindow/QAddCameraWidget.h"
#include "UI/MainWindow/RemoteCamera.h"
#include "support/TextFit.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace devices {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Stands for the window that adds cameras.
class Adder : public QWidget, public QRemoteCameraAdder {
public:
    long AddCamera(const QString& ip) override {
        asked << ip;
        return answer;
    }
    QStringList asked;
    long answer = 0;
};

class RemoteDialog : public DeviceListFixture {
protected:
    void SetUp() override {
        DeviceListFixture::SetUp();
        QLocalCfg::Instance()->SetRemoteCamIP("10.0.0.42");
    }
    void Open(QWidget* parent) {
        dialog = std::make_unique<QAddCameraWidget>(parent);
        ASSERT_TRUE(dialog->InitWidget());
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
    }
    void TearDown() override {
        dialog.reset();
        DeviceListFixture::TearDown();
    }
    QLineEdit* Edit() const { return dialog->findChild<QLineEdit*>("remoteIpEdit"); }
    void PressOK(const QString& text) {
        Edit()->setText(text);
        QTest::mouseClick(dialog->GetOKBtn(), Qt::LeftButton);
    }
    Adder adder;
    std::unique_ptr<QAddCameraWidget> dialog;
};

TEST_F(RemoteDialog, StartsWithTheAddressOfLastTime) {
    Open(&adder);
    EXPECT_EQ(dialog->windowTitle(), "Add Remote Camera");
    EXPECT_EQ(dialog->size(), QSize(372, 169));
    EXPECT_EQ(dialog->minimumSize(), dialog->maximumSize());
    EXPECT_EQ(Edit()->text(), "10.0.0.42");
    EXPECT_EQ(dialog->GetCameraID(), -1);
    QStringList labels;
    for (const QLabel* label : dialog->findChildren<QLabel*>())
        labels << label->text();
    EXPECT_TRUE(labels.contains("Camera IP Address:"));
    KeepPicture(*dialog, "add-remote-camera.png");
}

TEST_F(RemoteDialog, TheTextIsKeptAlsoAfterACancel) {
    Open(&adder);
    Edit()->setText("not yet");
    dialog->OnBtnCancel();
    EXPECT_EQ(QLocalCfg::Instance()->GetRemoteCamIP(), "10.0.0.42") << "not before its end";
    dialog.reset();
    EXPECT_EQ(QLocalCfg::Instance()->GetRemoteCamIP(), "not yet");
}

TEST_F(RemoteDialog, AddressesThatAreNoneKeepItOpen) {
    Open(&adder);
    for (const char* text : {"", "0.0.0.0", "127.0.0.1", "224.0.0.1", "1.2.3", "a.b.c.d"}) {
        PressOK(text);
        EXPECT_THAT(Messages(), ElementsAre("Please make sure the IP address is valid.||1")) << text;
        EXPECT_TRUE(dialog->isVisible());
    }
    EXPECT_TRUE(adder.asked.isEmpty());
}

TEST_F(RemoteDialog, ANewCamera) {
    adder.answer = 12;
    Open(&adder);
    PressOK("10.0.0.50");
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_EQ(dialog->GetCameraID(), 12);
    EXPECT_EQ(dialog->GetCameraIP(), "10.0.0.50");
    EXPECT_EQ(adder.asked, QStringList("10.0.0.50"));
}

TEST_F(RemoteDialog, AKnownCameraIsTakenAsItIs) {
    Gige camera;
    camera.ip = Ip(50);
    const long id = QDeviceDetectThread::AddCamera(GigeRecord(camera));
    Open(&adder);
    PressOK("10.0.0.50");
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_EQ(dialog->GetCameraID(), id);
    EXPECT_TRUE(adder.asked.isEmpty()) << "no second object";
}

TEST_F(RemoteDialog, NobodyAnswers) {
    adder.answer = -1;
    Open(&adder);
    PressOK("10.0.0.50");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_THAT(Messages(), ElementsAre("Failed to add the camera. Please make sure the\n"
                                        "camera has been connected to the network.||1"));
    adder.answer = 0;
    PressOK("10.0.0.51");
    EXPECT_EQ(dialog->result(), QDialog::Accepted) << "0 isn't negative";
}

TEST_F(RemoteDialog, WithAParentThatCannotAdd) {
    QWidget plain;
    Open(&plain);
    PressOK("10.0.0.50");
    EXPECT_EQ(Messages().size(), 1u);
    EXPECT_TRUE(dialog->isVisible());
    dialog.reset(); // before its parent
}

TEST_F(RemoteDialog, FitsInBothLanguages) {
    Open(&adder);
    Edit()->setText("223.255.255.255");
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(*dialog), IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(*dialog, {"OK"}), IsEmpty());
}

TEST_F(RemoteDialog, ShowsTheCameraInTheList) {
    MakeList();
    Gige camera;
    camera.ip = 0xC0A80114; // foreign
    const long id = QDeviceDetectThread::AddCamera(GigeRecord(camera));
    adder.answer = id;
    const DialogWatch<QAddCameraWidget> watch([](QAddCameraWidget& add) {
        add.findChild<QLineEdit*>()->setText("10.0.0.50");
        add.GetOKBtn()->click();
    });
    ShowAddRemoteCamera(&adder, *list);
    EXPECT_EQ(watch.Seen(), 1);
    ASSERT_TRUE(list->GetCameraItem(id));
    EXPECT_EQ(tree()->currentItem(), list->GetCameraItem(id));
}

TEST_F(RemoteDialog, CancelledShowsNothing) {
    MakeList();
    const auto before = Tree();
    const DialogWatch<QAddCameraWidget> watch([](QAddCameraWidget& add) { add.OnBtnCancel(); });
    ShowAddRemoteCamera(&adder, *list);
    EXPECT_EQ(watch.Seen(), 1);
    EXPECT_EQ(Tree(), before);
}

// --- the adding itself

class AddRemote : public WidgetFixture {
protected:
    void SetUp() override {
        WidgetFixture::SetUp();
        Gige full;
        full.ip = Ip(50);
        full.host = Ip(1);
        doubles.SetDeviceInfo(GigeRecord(full));
    }
};

TEST_F(AddRemote, ReadsTheRecordFromTheCamera) {
    const long id = AddRemoteCamera("10.0.0.50", Ip(256 + 1));
    ASSERT_EQ(id, first);
    EXPECT_EQ(doubles.LastHandleRecord().nTLayerType, 1u);
    EXPECT_EQ(doubles.LastHandleRecord().transport.gige.currentIp, Ip(50));
    EXPECT_EQ(doubles.LastHandleRecord().transport.gige.hostInterface, Ip(256 + 1));
    EXPECT_EQ(doubles.LastHandleRecord().macLow, 0u) << "no more than that was known";
    const CCameraRef camera = CCameraRef::ById(id);
    ASSERT_TRUE(camera);
    EXPECT_TRUE(camera->GetRemoteCamera());
    EXPECT_EQ(camera->GetOVCCDevInfo().macLow, 0xC0FF0001u);
}

TEST_F(AddRemote, NoAnswer) {
    doubles.QueueResult("OV_CC_CreateHandle", OV_STATUS_RESOURCE);
    EXPECT_EQ(AddRemoteCamera("10.0.0.50", 0), -1);
    doubles.QueueResult("OV_CC_GetDeviceInfo", OV_STATUS_NETWORK);
    EXPECT_EQ(AddRemoteCamera("10.0.0.50", 0), -1);
    EXPECT_EQ(QCameraContainer::Instance()->GetTotalCameraNum(), 0);
    EXPECT_EQ(doubles.OpenHandles('c'), 0) << "the camera object has gone";
}

TEST_F(AddRemote, NoMemory) {
    const FailAllocationsOf failing(sizeof(QCamera));
    EXPECT_EQ(AddRemoteCamera("10.0.0.50", 0), 0);
    EXPECT_EQ(doubles.CountOf("OV_CC_CreateHandle"), 0);
}

} // namespace
} // namespace devices
