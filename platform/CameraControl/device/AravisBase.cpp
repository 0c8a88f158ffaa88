#include "device/AravisBase.h"

#include <algorithm>
#include <utility>

#include "device/FrameStream.h"
#include "device/Statuses.h"
#include "device/Threads.h"

namespace kolt::cc {

namespace {

using LossCallback = std::function<void()>;

void onControlLost(ArvDevice*, gpointer user) {
    (*static_cast<LossCallback*>(user))();
}

void freeLossCallback(gpointer user, GClosure*) {
    delete static_cast<LossCallback*>(user);
}

} // namespace

AravisBase::AravisBase(GObjectPtr<ArvDevice> device, const Logger& log, std::function<void()> controlLost)
    : device_(std::move(device)), log_(log), features_(*this, xml_) {
    if (!controlLost) {
        return;
    }
    // The closure owns the callback, so a signal that is under way while the handler is taken away still
    // finds it.
    lossHandler_ =
        g_signal_connect_data(device_.get(), "control-lost", G_CALLBACK(onControlLost),
                              new LossCallback(std::move(controlLost)), freeLossCallback, GConnectFlags(0));
}

AravisBase::~AravisBase() {
    if (lossHandler_ != 0) {
        g_signal_handler_disconnect(device_.get(), lossHandler_);
    }
}

std::uint32_t AravisBase::readMemory(std::uint64_t address, std::uint8_t* destination, std::size_t length) {
    constexpr std::size_t kPiece = 0x10000;
    GErrorHolder error;
    for (std::size_t done = 0; done < length;) {
        const auto piece = static_cast<guint32>(std::min(kPiece, length - done));
        if (arv_device_read_memory(arv(), address + done, piece, destination + done, error.out()) == 0) {
            return error ? statusFromError(error.get()) : OV_STATUS_UNKNOWN;
        }
        done += piece;
    }
    return OV_STATUS_OK;
}

std::uint32_t AravisBase::writeMemory(std::uint64_t address, const std::uint8_t* source, std::size_t length) {
    constexpr std::size_t kPiece = 0x10000;
    GErrorHolder error;
    for (std::size_t done = 0; done < length;) {
        const auto piece = static_cast<guint32>(std::min(kPiece, length - done));
        // Aravis only reads what it is given, though its signature doesn't say so.
        void* from = const_cast<std::uint8_t*>(source + done);
        if (arv_device_write_memory(arv(), address + done, piece, from, error.out()) == 0) {
            return error ? statusFromError(error.get()) : OV_STATUS_UNKNOWN;
        }
        done += piece;
    }
    return OV_STATUS_OK;
}

std::uint32_t AravisBase::executeCommand(const char* feature) {
    return features_.execute(feature);
}

std::uint32_t AravisBase::payloadSize(std::size_t& bytes) {
    std::int64_t value = 0;
    const std::uint32_t status = features_.integer("PayloadSize", value);
    if (status == OV_STATUS_OK && value <= 0) {
        return OV_STATUS_GENICAM_RANGE;
    }
    bytes = static_cast<std::size_t>(value);
    return status;
}

// Only a makeshift for frames that lose their leader before one has come: what is missing stays 0.
FrameGeometry AravisBase::geometry() {
    FrameGeometry geometry;
    std::int64_t value = 0;
    const auto read = [&](const char* name, std::uint32_t& field) {
        if (features_.integer(name, value) == OV_STATUS_OK && value > 0) {
            field = static_cast<std::uint32_t>(value);
        }
    };
    read("Width", geometry.width);
    read("Height", geometry.height);
    read("PixelFormat", geometry.pixelFormat);
    return geometry;
}

std::uint32_t AravisBase::openStream(const StreamSettings& settings, FrameSource::Hooks hooks,
                                     std::shared_ptr<FrameSource>& stream) {
    if (!descriptorsToSpare()) {
        return OV_STATUS_RESOURCE;
    }
    StreamShape shape;
    std::uint32_t status = payloadSize(shape.payload);
    if (status != OV_STATUS_OK) {
        return status;
    }
    shape.geometry = geometry();
    shape.packetData = packetData();
    stream = ownStream(settings, shape, hooks);
    if (stream) {
        return OV_STATUS_OK;
    }
    const FrameStream::Maker maker = [&](ArvStreamCallback callback, void* user, std::uint32_t& result) {
        GErrorHolder error;
        prepareStream(settings);
        GObjectPtr<ArvStream> made(arv_device_create_stream(arv(), callback, user, error.out()));
        if (!made) {
            result = error ? statusFromError(error.get()) : OV_STATUS_RESOURCE;
            log()(LogLevel::error, "no stream: %s", error.text());
            return made;
        }
        tuneStream(made.get(), settings, shape);
        return made;
    };
    stream = FrameStream::create(maker, settings, shape, std::move(hooks), status);
    return status;
}

TransportDevice::Control AravisBase::askControl() {
    // USB: whoever has claimed the interface holds it until it is unplugged, so an answer is enough. The
    // first register of the bootstrap map is there on every device.
    GErrorHolder error;
    std::array<std::uint8_t, 4> version{};
    arv_device_read_memory(arv(), 0, version.size(), version.data(), error.out());
    if (!error) {
        return Control::held;
    }
    const bool gone = g_error_matches(error.get(), ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_NOT_CONNECTED) != 0;
    return gone ? Control::lost : Control::unknown;
}

void AravisBase::copyXmlOfAravis() {
    std::size_t size = 0;
    const char* text = arv_device_get_genicam_xml(arv(), &size);
    if (text != nullptr) {
        xml_.assign(text, text + size);
    }
}

} // namespace kolt::cc
