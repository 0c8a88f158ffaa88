#include "arv_client.h"

#include <gtest/gtest.h>

namespace kolt::test {

namespace {

void Check(GError* error, const char* what) {
    if (error == nullptr)
        return;
    ADD_FAILURE() << what << ": " << error->message;
    g_error_free(error);
}

} // namespace

ArvClient::ArvClient(const std::string& address, const std::string& hostAddress) {
    GError* error = nullptr;
    const Ref<GInetAddress> host(g_inet_address_new_from_string(hostAddress.c_str()));
    const Ref<GInetAddress> camera(g_inet_address_new_from_string(address.c_str()));
    m_device.reset(arv_gv_device_new(host.get(), camera.get(), &error));
    if (!m_device) {
        const std::string text = error == nullptr ? "the camera could not be opened" : error->message;
        g_clear_error(&error);
        throw std::runtime_error(text);
    }
    g_clear_error(&error);
}

ArvClient::~ArvClient() {
    if (m_stream)
        StopStream();
}

void ArvClient::SetInt(const char* feature, int64_t value) {
    GError* error = nullptr;
    arv_device_set_integer_feature_value(Device(), feature, value, &error);
    Check(error, feature);
}

void ArvClient::SetFloat(const char* feature, double value) {
    GError* error = nullptr;
    arv_device_set_float_feature_value(Device(), feature, value, &error);
    Check(error, feature);
}

void ArvClient::SetText(const char* feature, const char* value) {
    GError* error = nullptr;
    arv_device_set_string_feature_value(Device(), feature, value, &error);
    Check(error, feature);
}

void ArvClient::SetBool(const char* feature, bool value) {
    GError* error = nullptr;
    arv_device_set_boolean_feature_value(Device(), feature, value ? TRUE : FALSE, &error);
    Check(error, feature);
}

int64_t ArvClient::GetInt(const char* feature) {
    GError* error = nullptr;
    const int64_t value = arv_device_get_integer_feature_value(Device(), feature, &error);
    Check(error, feature);
    return value;
}

double ArvClient::GetFloat(const char* feature) {
    GError* error = nullptr;
    const double value = arv_device_get_float_feature_value(Device(), feature, &error);
    Check(error, feature);
    return value;
}

std::string ArvClient::GetText(const char* feature) {
    GError* error = nullptr;
    const char* value = arv_device_get_string_feature_value(Device(), feature, &error);
    Check(error, feature);
    return value == nullptr ? std::string() : value;
}

void ArvClient::Execute(const char* feature) {
    GError* error = nullptr;
    arv_device_execute_command(Device(), feature, &error);
    Check(error, feature);
}

uint32_t ArvClient::Register(uint32_t address) {
    GError* error = nullptr;
    guint32 value = 0;
    arv_device_read_register(Device(), address, &value, &error);
    Check(error, "read register");
    return value;
}

int ArvClient::TryWriteRegister(uint32_t address, uint32_t value) {
    GError* error = nullptr;
    arv_device_write_register(Device(), address, value, &error);
    if (error == nullptr)
        return -1;
    const int code = error->code;
    g_error_free(error);
    return code;
}

void ArvClient::WriteRegister(uint32_t address, uint32_t value) {
    EXPECT_EQ(TryWriteRegister(address, value), -1) << "write of register " << address;
}

void ArvClient::StartStream(unsigned buffers, bool resend) {
    GError* error = nullptr;
    arv_gv_device_set_stream_options(ARV_GV_DEVICE(Device()), ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    m_stream.reset(arv_device_create_stream(Device(), nullptr, nullptr, &error));
    Check(error, "create a stream");
    ASSERT_TRUE(m_stream);
    g_object_set(m_stream.get(), "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                 4 << 20, "packet-resend",
                 resend ? ARV_GV_STREAM_PACKET_RESEND_ALWAYS : ARV_GV_STREAM_PACKET_RESEND_NEVER,
                 "frame-retention", 5000000u, nullptr); // a loaded machine may hold the client up for long
    const auto payload = static_cast<size_t>(GetInt("PayloadSize"));
    for (unsigned i = 0; i < buffers; ++i)
        arv_stream_push_buffer(m_stream.get(), arv_buffer_new_allocate(payload));
    Execute("AcquisitionStart");
}

void ArvClient::StopStream() {
    Execute("AcquisitionStop");
    m_stream.reset();
}

ArvFrame ArvClient::Next(std::chrono::milliseconds timeout) {
    ArvFrame frame;
    ArvBuffer* buffer =
        arv_stream_timeout_pop_buffer(m_stream.get(), static_cast<guint64>(timeout.count()) * 1000);
    if (buffer == nullptr)
        return frame;
    frame.status = arv_buffer_get_status(buffer);
    frame.id = arv_buffer_get_frame_id(buffer);
    frame.timestamp = arv_buffer_get_timestamp(buffer);
    size_t size = 0;
    const void* data = arv_buffer_get_data(buffer, &size);
    frame.pixels.assign(static_cast<const uint8_t*>(data), static_cast<const uint8_t*>(data) + size);
    if (frame.status == ARV_BUFFER_STATUS_SUCCESS) {
        frame.pixelFormat = arv_buffer_get_image_pixel_format(buffer);
        gint x = 0, y = 0, width = 0, height = 0;
        arv_buffer_get_image_region(buffer, &x, &y, &width, &height);
        frame.x = static_cast<uint32_t>(x);
        frame.y = static_cast<uint32_t>(y);
        frame.width = static_cast<uint32_t>(width);
        frame.height = static_cast<uint32_t>(height);
    }
    frame.buffer.reset(ARV_BUFFER(g_object_ref(buffer)));
    arv_stream_push_buffer(m_stream.get(), buffer);
    return frame;
}

} // namespace kolt::test
