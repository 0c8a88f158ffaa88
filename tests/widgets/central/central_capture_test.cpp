// Pictures, recordings, series, the XML file, and the windows that wait for them.
#include "CentralFixture.h"

#include "UI/Controls/QSaveDoneHintDlg.h"
#include "support/SystemDoubles.h"

#include <QFileDialog>
#include <QLabel>
#include <QThread>

namespace central {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kAccessDenied = 0x80000203;

// Answers the next file dialog: with this path, or by Cancel when it is empty.
class FileAnswer {
public:
    explicit FileAnswer(const QString& path = {})
        : m_watch([this, path](QFileDialog& dialog) {
            title = dialog.windowTitle();
            filters = dialog.nameFilters();
            const QStringList files = dialog.selectedFiles();
            proposed = files.isEmpty() ? QString() : files.first();
            if (path.isEmpty()) {
                dialog.reject();
                return;
            }
            dialog.selectFile(path);
            static_cast<QDialog&>(dialog).accept();
        }) {}
    int Seen() const { return m_watch.Seen(); }

    QString title;
    QStringList filters;
    QString proposed;

private:
    devices::DialogWatch<QFileDialog> m_watch;
};

// Reads the notice that something was saved; it closes by itself.
class SavedNotice {
public:
    SavedNotice()
        : m_watch([this](QSaveDoneHintDlg& notice) {
            for (const QLabel* label : notice.findChildren<QLabel*>())
                text += label->text();
            notice.SetOpener([this](const QString& path) { folder = path; });
            notice.OnBtnView();
            notice.done(1);
        }) {}
    int Seen() const { return m_watch.Seen(); }

    QString text;
    QString folder;

private:
    devices::DialogWatch<QSaveDoneHintDlg> m_watch;
};

// --- one picture

struct SnapCase {
    const char* what;
    const char* typed;
    const char* written;
    bool encoded;
};

class Snap : public Central, public testing::WithParamInterface<SnapCase> {};

TEST_P(Snap, IsWrittenInTheFormOfItsName) {
    Make(1);
    Live();
    doubles.ForgetCalls();
    FileAnswer answer(files.filePath(GetParam().typed));
    SavedNotice notice;
    Do(0);
    EXPECT_EQ(answer.Seen(), 1);
    EXPECT_EQ(answer.title, "Save Image");
    EXPECT_THAT(answer.filters, ElementsAre("Images (*.bmp)", "RawData (*.raw)", "Images (*.jpg)"));
    EXPECT_TRUE(QRegExp("\\d{17}\\.bmp").exactMatch(QFileInfo(answer.proposed).fileName()))
        << answer.proposed.toStdString();
    EXPECT_EQ(QFileInfo(answer.proposed).absolutePath(), files.path());
    EXPECT_TRUE(QFile::exists(files.filePath(GetParam().written)));
    EXPECT_EQ(doubles.CountOf("OV_MP_SaveImage"), GetParam().encoded ? 1 : 0);
    EXPECT_EQ(notice.Seen(), 1);
    EXPECT_TRUE(notice.text.contains("Images captured.")) << notice.text.toStdString();
    EXPECT_EQ(notice.folder, files.path());
    EXPECT_THAT(Messages(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Names, Snap,
                         testing::Values(SnapCase{"Bmp", "a.bmp", "a.bmp", true},
                                         SnapCase{"Jpeg", "a.jpg", "a.jpg", true},
                                         SnapCase{"Raw", "a.raw", "a.raw", false},
                                         SnapCase{"NoEnding", "a", "a.bmp", true}),
                         [](const auto& row) { return std::string(row.param.what); });

TEST_F(Central, AHiddenPictureIsWarnedOfAndWritten) {
    Make(1);
    Live();
    FileAnswer answer(files.filePath(".a.bmp"));
    SavedNotice notice;
    Do(0);
    EXPECT_THAT(Messages(), ElementsAre("This file is hidden files.||2"));
    EXPECT_TRUE(QFile::exists(files.filePath(".a.bmp")));
}

TEST_F(Central, ACancelledPictureChangesNothing) {
    Make(1);
    Live();
    FileAnswer answer;
    Do(0);
    EXPECT_EQ(answer.Seen(), 1);
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_TRUE(QDir(files.path()).isEmpty());
}

TEST_F(Central, TheNextPictureStartsInTheLastFolder) {
    Make(1);
    Live();
    ASSERT_TRUE(QDir(files.path()).mkdir("deep"));
    {
        FileAnswer answer(files.filePath("deep/a.bmp"));
        SavedNotice notice;
        Do(0);
    }
    FileAnswer again;
    Do(0);
    EXPECT_EQ(QFileInfo(again.proposed).absolutePath(), files.filePath("deep"));
}

TEST_F(Central, APictureThatFailsIsToldAndLogged) {
    Make(1);
    Live();
    doubles.SetResult("OV_MP_SaveImage", kAccessDenied);
    FileAnswer answer(files.filePath("a.bmp"));
    Do(0);
    const std::vector<std::string> messages = Messages();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_THAT(messages[0], testing::StartsWith("Failed to save the captured image.|"));
    EXPECT_THAT(messages[0], testing::EndsWith("|1"));
    const std::string reason =
        messages[0].substr(messages[0].find('|') + 1, messages[0].rfind('|') - messages[0].find('|') - 1);
    EXPECT_THAT(Log(), ElementsAre("1 Failed to save the captured image. (" + reason + ")"));
}

TEST_F(Central, WithoutACameraTheDialogComesAndNothingIsSaved) {
    Make(0);
    FileAnswer answer(files.filePath("a.bmp"));
    Do(0);
    EXPECT_EQ(answer.Seen(), 1);
    EXPECT_FALSE(QFile::exists(files.filePath("a.bmp")));
}

// --- video

TEST_F(Central, ARecordingIsStartedAndSaved) {
    Make(1);
    Live();
    QSignalSpy action(window, &QOrvCentralWindow::SigUpdateRecAction);
    const QString path = files.filePath("a.raw");
    {
        FileAnswer answer(path);
        Do(23);
        EXPECT_EQ(answer.title, "Save Record");
        EXPECT_THAT(answer.filters, ElementsAre("RawData(*.raw)"));
        EXPECT_TRUE(QRegExp("\\d{17}\\.raw").exactMatch(QFileInfo(answer.proposed).fileName()));
    }
    EXPECT_TRUE(Camera(Id(1)).IsRecord());
    EXPECT_EQ(window->RecordFile(), path);
    EXPECT_TRUE(window->RenderArea()->TitleBar()->TimeLabel()->isVisible());
    EXPECT_EQ(window->ToolBar()->button(23)->toolTip(), "Stop Recording");
    doubles.PushFrame(Frame(0x55));
    ASSERT_TRUE(devices::WaitFor([&] { return Camera(Id(1)).IsRecordedSuccess(); }));
    SavedNotice notice;
    Do(23);
    EXPECT_FALSE(Camera(Id(1)).IsRecord());
    EXPECT_TRUE(notice.text.contains("Video files saved."));
    EXPECT_EQ(notice.folder, files.path());
    EXPECT_FALSE(window->RenderArea()->TitleBar()->TimeLabel()->isVisible());
    EXPECT_EQ(window->ToolBar()->button(23)->toolTip(), "Start Recording");
    ASSERT_EQ(action.count(), 2);
    EXPECT_TRUE(action[0][0].toBool());
    EXPECT_FALSE(action[1][0].toBool());
    EXPECT_EQ(QFileInfo(path).size(), 64 * 48);
    FileAnswer again;
    Do(23);
    EXPECT_EQ(QFileInfo(again.proposed).absolutePath(), files.path());
    EXPECT_EQ(window->RecordFile(), QString()) << "a cancelled dialog leaves no file name";
    EXPECT_FALSE(Camera(Id(1)).IsRecord());
}

TEST_F(Central, ARecordingWithoutAFrameIsAFailure) {
    Make(1);
    Live();
    {
        FileAnswer answer(files.filePath("a.raw"));
        Do(23);
    }
    Do(23);
    EXPECT_THAT(Messages(), ElementsAre("Recording failed.No data.||1"));
    EXPECT_FALSE(Camera(Id(1)).IsRecord());
}

TEST_F(Central, ARecordingThatCannotStartIsToldAndLogged) {
    Make(1);
    Live();
    QSignalSpy action(window, &QOrvCentralWindow::SigUpdateRecAction);
    support::SetFreeMiB(0);
    FileAnswer answer(files.filePath("a.raw"));
    Do(23);
    const std::vector<std::string> messages = Messages();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_THAT(messages[0], testing::StartsWith("Recording failed.|"));
    const std::string reason =
        messages[0].substr(messages[0].find('|') + 1, messages[0].rfind('|') - messages[0].find('|') - 1);
    EXPECT_THAT(Log(), ElementsAre("1 Recording failed. (" + reason + ")"));
    EXPECT_EQ(action.count(), 0);
    EXPECT_FALSE(window->RenderArea()->TitleBar()->TimeLabel()->isVisible());
    support::SetFreeMiB({});
}

TEST_F(Central, ANameWithoutRawShowsARecordingThatIsNone) {
    Make(1);
    Live();
    {
        FileAnswer answer(files.filePath("a.avi"));
        Do(23);
    }
    EXPECT_FALSE(Camera(Id(1)).IsRecord());
    EXPECT_EQ(window->ToolBar()->button(23)->toolTip(), "Stop Recording");
    EXPECT_TRUE(window->RenderArea()->TitleBar()->TimeLabel()->isVisible());
}

TEST_F(Central, StoppingTheLiveViewEndsTheRecordingFirst) {
    Make(1);
    Live();
    {
        FileAnswer answer(files.filePath("a.raw"));
        Do(23);
    }
    doubles.PushFrame(Frame(0x55));
    ASSERT_TRUE(devices::WaitFor([&] { return Camera(Id(1)).IsRecordedSuccess(); }));
    SavedNotice notice;
    Do(22);
    EXPECT_TRUE(notice.text.contains("Video files saved."));
    EXPECT_FALSE(Camera(Id(1)).IsRecord());
    EXPECT_FALSE(Camera(Id(1)).IsShotting());
}

TEST_F(Central, AStopByTheCameraShowsNoNotice) {
    Make(1);
    Live();
    {
        FileAnswer answer(files.filePath("a.raw"));
        Do(23);
    }
    doubles.PushFrame(Frame(0x55));
    ASSERT_TRUE(devices::WaitFor([&] { return Camera(Id(1)).IsRecordedSuccess(); }));
    SavedNotice notice;
    std::unique_ptr<QThread> save(QThread::create([&] { window->OnStopRecording(); }));
    save->start();
    ASSERT_TRUE(devices::WaitFor([&] { return !Camera(Id(1)).IsRecord(); }));
    save->wait();
    EXPECT_EQ(notice.Seen(), 0);
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_TRUE(Camera(Id(1)).IsShotting());
}

TEST_F(Central, ACameraLostDuringTheFileDialogIsNotRecorded) {
    Make(1);
    Live();
    devices::DialogWatch<QFileDialog> dialog([&](QFileDialog& it) {
        window->OnCameraDisconnect(Id(1));
        it.selectFile(files.filePath("a.raw"));
        static_cast<QDialog&>(it).accept();
    });
    Do(23);
    EXPECT_EQ(window->CurrentCameraID(), -1);
    EXPECT_FALSE(QFile::exists(files.filePath("a.raw")));
    EXPECT_FALSE(window->RenderArea()->TitleBar()->TimeLabel()->isVisible());
}

// --- series

TEST_F(Central, ASeriesTogglesAndTellsItsFolder) {
    QLocalCfg::Instance()->SetSaveMode(1);
    QLocalCfg::Instance()->SetImgSaveFormat(2);
    Make(1);
    Live();
    Do(23);
    EXPECT_TRUE(Camera(Id(1)).IsCapturing());
    EXPECT_EQ(window->ToolBar()->button(23)->toolTip(), "Stop Recording");
    EXPECT_EQ(window->RenderArea()->TitleBar()->TimeLabel()->text(), "Capturing...");
    ASSERT_TRUE(devices::WaitFor([&] {
        doubles.PushFrame(Frame(0x55));
        return Camera(Id(1)).GetIsSaveImaged();
    }));
    SavedNotice notice;
    Do(23);
    EXPECT_FALSE(Camera(Id(1)).IsCapturing());
    EXPECT_TRUE(notice.text.contains("Images captured."));
    EXPECT_EQ(notice.folder.toStdString(), files.path().toStdString() + "/" + Name(1));
    EXPECT_EQ(window->ToolBar()->button(23)->toolTip(), "Start Recording");
}

TEST_F(Central, ASeriesWithoutAPictureIsAnError) {
    QLocalCfg::Instance()->SetSaveMode(1);
    Make(1);
    Live();
    Do(23);
    Do(23);
    EXPECT_THAT(Messages(), ElementsAre("No picture saved.||1"));
}

TEST_F(Central, AnyOtherSaveModeDoesNothing) {
    QLocalCfg::Instance()->SetSaveMode(2);
    Make(1);
    Live();
    Do(23);
    EXPECT_FALSE(Camera(Id(1)).IsCapturing());
    EXPECT_FALSE(Camera(Id(1)).IsRecord());
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Central, TheCameraTellsThatItsSeriesBeganOrEnded) {
    Make(1);
    Live();
    for (const bool capturing : {true, false}) {
        std::unique_ptr<QThread> save(QThread::create([&] { window->UpdateCaptureBtnAndAction(capturing); }));
        save->start();
        ASSERT_TRUE(devices::WaitFor([&] {
            return window->ToolBar()->button(23)->toolTip() ==
                   (capturing ? "Stop Recording" : "Start Recording");
        }));
        save->wait();
        EXPECT_EQ(window->RenderArea()->TitleBar()->TimeLabel()->isVisible(), capturing);
    }
}

// --- XML

TEST_F(Central, TheXmlIsSavedUnderTheModelsName) {
    Make(1);
    window->OnOpenCamera(Id(1));
    const QString path = files.filePath("own.xml");
    FileAnswer answer(path);
    Do(28);
    EXPECT_EQ(answer.title, "Save GenIcam File");
    EXPECT_THAT(answer.filters, ElementsAre("File (*.xml)"));
    EXPECT_EQ(QFileInfo(answer.proposed).fileName(), "GE-1.xml");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().toStdString(), support::CameraXml());
    EXPECT_THAT(Log(), testing::Not(testing::Contains(testing::HasSubstr("Failed"))));
}

TEST_F(Central, AnXmlThatCannotBeWrittenIsLogged) {
    Make(1);
    window->OnOpenCamera(Id(1));
    Log();
    ASSERT_TRUE(QDir(files.path()).mkdir("taken.xml"));
    devices::DialogWatch<QFileDialog> dialog([&](QFileDialog& it) {
        it.setFileMode(QFileDialog::Directory); // so that the dialog itself takes it
        it.selectFile(files.filePath("taken.xml"));
        static_cast<QDialog&>(it).accept();
    });
    Do(28);
    EXPECT_THAT(Log(), ElementsAre("1 Failed to save the GenICam XML file. (" + files.path().toStdString() +
                                   "/taken.xml)"));
}

TEST_F(Central, ACancelledXmlOrNoCameraLeavesNothing) {
    Make(1);
    Do(28); // no camera: no dialog
    window->OnOpenCamera(Id(1));
    FileAnswer answer;
    Do(28);
    EXPECT_EQ(answer.Seen(), 1);
    EXPECT_TRUE(QDir(files.path()).isEmpty());
}

} // namespace
} // namespace central
