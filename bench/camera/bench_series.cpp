// What the save thread makes of each frame of a picture series (names, folder, encoding, file) beside the
// encoder alone, the files alone (as many bytes by plain writes), and one long file that is on the disk in
// the end, all of the same frame, in one run.
//
// bench_series [FOLDER]: writes pictures below FOLDER (the present one without) and removes them again.
#include "Camera/PixelFormat.h"
#include "Camera/QCamera.h"
#include "Common/QLocalCfg.h"
#include "Common/SleepEx.h"
#include "StraightWriter.h"
#include "VirtualCamera.h"
#include "support/LoopbackAddress.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr uint16_t kWidth = 2448, kHeight = 2048;
constexpr int kPictures = 60;
constexpr int kRounds = 5;
constexpr int kQuality = 60; // of the setting; 79 of the encoder

template<typename Work>
double PerSecond(Work work) {
    const auto start = Clock::now();
    for (int i = 0; i < kPictures; ++i)
        work();
    return kPictures / std::chrono::duration<double>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The encoder with buffers of its own, made once.
class Encoder {
public:
    explicit Encoder(QCamera& camera)
        : m_frame(camera.GetFrameSize()), m_output(kWidth * kHeight * 3 + 1024) {
        camera.GetFrameBuf(m_frame.data(), camera.GetFrameSize());
        m_record.sourceType = GetConvertPixelFormat(camera.GetPixelType());
        m_record.width = kWidth;
        m_record.height = kHeight;
        m_record.source = m_frame.data();
        m_record.sourceLength = camera.GetFrameSize();
        m_record.output = m_output.data();
        m_record.outputCapacity = static_cast<uint32_t>(m_output.size());
        m_record.jpegQuality = kQuality * 49 / 100 + 50;
    }
    ~Encoder() { OV_MP_DestroyHandle(m_handle); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    void Encode(int type) {
        m_record.imageType = static_cast<uint32_t>(type);
        if (OV_MP_SaveImage(m_handle, &m_record) != OV_STATUS_OK)
            std::printf("the encoder refuses\n");
    }
    size_t Length() const { return m_record.outputLength; }
    void WriteFile(const std::string& path) const {
        const int file = open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
        if (file < 0 || write(file, m_output.data(), Length()) != static_cast<ssize_t>(Length())) {
            std::perror(path.c_str());
            std::exit(1);
        }
        close(file);
    }

private:
    void* m_handle = OV_MP_CreateHandle();
    std::vector<uint8_t> m_frame, m_output;
    _OV_IMAGE_INFO_ m_record{};
};

bool Hold(QCamera& camera, const vcam::Config& config) {
    _OV_CC_DEVICE_INFO_ info{};
    info.nTLayerType = OV_TLAYER_GIGE;
    info.transport.gige.currentIp = ntohl(inet_addr(config.address.c_str()));
    camera.SetOVCCDevInfo(info);
    camera.SetCameraName("series");
    camera.SetDisplayMode(10);
    if (camera.OpenCamera() != 0 || camera.OnStartGettingFrame(true) != 0)
        return false;
    while (camera.GetRecvFrameNum() < 2 || camera.SaveCurrentFrame() != 0)
        SleepEx(5);
    // The first picture also makes the media handle.
    const QByteArray first = (QLocalCfg::Instance()->GetDataOutputFolder() + "/first").toUtf8();
    return camera.SnapPicture(first.constData(), 0) == 0 && camera.StopGettingFrame() == 0;
}

struct Rates {
    std::vector<double> series, encoder, files, disk; // pictures a second
    double cpuMs = 0;                                 // of a picture of the last series
    size_t length = 0;
};

// Each round begins with nothing on its way to the disk.
void Empty(const QString& folder) {
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    RemoveAndSettle((folder + "/none").toStdString());
}

Rates Measure(QCamera& camera, int type) {
    const QString pictures = QLocalCfg::Instance()->GetDataOutputFolder() + "/series";
    Rates rates;
    Encoder alone(camera);
    for (int round = 0; round < kRounds; ++round) {
        rates.encoder.push_back(PerSecond([&] { alone.Encode(type); }));
        Empty(pictures);
        const double cpu = ProcessCpuSeconds();
        rates.series.push_back(PerSecond([&] { camera.SaveImages(); }));
        rates.cpuMs = (ProcessCpuSeconds() - cpu) * 1e3 / kPictures;
        Empty(pictures);
        int number = 0;
        rates.files.push_back(
            PerSecond([&] { alone.WriteFile((pictures + "/" + QString::number(++number)).toStdString()); }));
        Empty(pictures);
        rates.length = alone.Length();
        const WriteResult written =
            WriteOneBuffer((pictures + "/one").toStdString(), WriteMethod::Plain, rates.length, kPictures);
        rates.disk.push_back(written.megabytesPerSecond * 1e6 / static_cast<double>(rates.length));
    }
    Empty(pictures);
    return rates;
}

void Row(const char* format, uint32_t code, int type) {
    vcam::Config config;
    config.address = kolt::test::LoopbackAddress(0);
    config.sensorWidth = kWidth;
    config.sensorHeight = kHeight;
    config.pixelFormat = code;
    vcam::VirtualCamera device(config);
    device.Start();
    QCamera* camera = QCamera::NewInstance();
    camera->AddRef();
    if (!Hold(*camera, config)) {
        std::printf("the camera does not start\n");
        camera->ReleaseRef();
        return;
    }
    QLocalCfg::Instance()->SetImgSaveFormat(type);
    const Rates rates = Measure(*camera, type);
    const double series = Median(rates.series), encoder = Median(rates.encoder), files = Median(rates.files);
    // One after the other, as the save thread does it.
    const double bound = 1 / (1 / encoder + 1 / files);
    std::printf("%-10s %-5s %8.1f %10.1f %10.1f %10.1f %10.1f %9.2f %9.2f %9lld\n", format,
                type == 0 ? "BMP" : "JPEG", static_cast<double>(rates.length) / 1e6, series, encoder, files,
                Median(rates.disk), series / bound, rates.cpuMs,
                static_cast<long long>(camera->GetCounters().imageFailures));
    camera->ReleaseRef();
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QTemporaryDir folder(QString(argc > 1 ? argv[1] : ".") + "/bench_series-XXXXXX");
    QLocalCfg::SetDirectory(folder.path());
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetDataOutputFolder(folder.path());
    cfg->SetImgSaveFileNameIndexType(1);
    cfg->SetImgQuality(kQuality);
    std::printf("%d x %d, %d pictures a round, median of %d\n", kWidth, kHeight, kPictures, kRounds);
    std::printf("%-10s %-5s %8s %10s %10s %10s %10s %9s %9s %9s\n", "format", "", "MB", "series/s",
                "encoder/s", "files/s", "disk/s", "of bound", "CPU ms", "failures");
    for (const int type : {0, 1}) {
        Row("Mono8", 0x01080001, type);
        Row("BayerRG8", 0x01080009, type);
    }
    QLocalCfg::ReleaseInstance();
    return 0;
}
