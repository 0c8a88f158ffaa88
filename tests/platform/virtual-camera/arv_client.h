// An Aravis client, the second opinion on what the virtual camera does.
#ifndef KOLT_TESTS_VCAM_ARV_CLIENT_H
#define KOLT_TESTS_VCAM_ARV_CLIENT_H

#include <arv.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kolt::test {

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template<class T>
using Ref = std::unique_ptr<T, Unref>;

struct ArvFrame {
    ArvBufferStatus status = ARV_BUFFER_STATUS_UNKNOWN;
    uint64_t id = 0;
    uint64_t timestamp = 0;
    uint32_t pixelFormat = 0;
    uint32_t width = 0, height = 0, x = 0, y = 0;
    std::vector<uint8_t> pixels;
    Ref<ArvBuffer> buffer; // for chunks
};

// Opens by address (std::runtime_error when that fails) and takes control of the camera. All else fails the
// test on an error.
class ArvClient {
public:
    explicit ArvClient(const std::string& address, const std::string& hostAddress = "127.0.0.1");
    ~ArvClient();

    ArvDevice* Device() const { return m_device.get(); }
    bool Controls() const { return arv_gv_device_is_controller(ARV_GV_DEVICE(Device())) != 0; }

    void SetInt(const char* feature, int64_t value);
    void SetFloat(const char* feature, double value);
    void SetText(const char* feature, const char* value);
    void SetBool(const char* feature, bool value);
    int64_t GetInt(const char* feature);
    double GetFloat(const char* feature);
    std::string GetText(const char* feature);
    void Execute(const char* feature);
    uint32_t Register(uint32_t address);
    void WriteRegister(uint32_t address, uint32_t value);
    // The code of Aravis's error for a write; -1 when it was taken.
    int TryWriteRegister(uint32_t address, uint32_t value);

    // Opens the stream with `buffers` buffers of PayloadSize and starts the acquisition.
    void StartStream(unsigned buffers = 10, bool resend = true);
    void StopStream();
    void AbandonStream() { m_stream.reset(); } // without a word to the camera
    // The next frame; with status ARV_BUFFER_STATUS_UNKNOWN when none came in time.
    ArvFrame Next(std::chrono::milliseconds timeout = std::chrono::seconds(5));
    ArvStream* Stream() const { return m_stream.get(); }

private:
    Ref<ArvDevice> m_device;
    Ref<ArvStream> m_stream;
};

} // namespace kolt::test

#endif
