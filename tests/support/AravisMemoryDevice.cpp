#include "support/AravisMemoryDevice.h"

#include "Base/GCException.h"

namespace {

struct PortDevice {
    ArvDevice parent;
    support::MemoryPort* port;
};
struct PortDeviceClass {
    ArvDeviceClass parent;
};

G_DEFINE_TYPE(PortDevice, kolt_port_device, ARV_TYPE_DEVICE)

support::MemoryPort& PortOf(ArvDevice* device) {
    return *reinterpret_cast<PortDevice*>(device)->port;
}

template<class Access>
gboolean Try(GError** error, Access access) {
    try {
        access();
        return TRUE;
    } catch (const GenICam_3_0::GenericException& exception) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_TRANSFER_ERROR, "%s",
                    exception.GetDescription());
        return FALSE;
    }
}

gboolean ReadMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error) {
    return Try(error, [&] { PortOf(device).Read(buffer, static_cast<gint64>(address), size); });
}

gboolean WriteMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error) {
    return Try(error, [&] { PortOf(device).Write(buffer, static_cast<gint64>(address), size); });
}

// Registers are in network order, as those of GigE Vision devices.
gboolean ReadRegister(ArvDevice* device, guint64 address, guint32* value, GError** error) {
    guint32 bytes = 0;
    const gboolean done = ReadMemory(device, address, sizeof bytes, &bytes, error);
    *value = GUINT32_FROM_BE(bytes);
    return done;
}

gboolean WriteRegister(ArvDevice* device, guint64 address, guint32 value, GError** error) {
    guint32 bytes = GUINT32_TO_BE(value);
    return WriteMemory(device, address, sizeof bytes, &bytes, error);
}

void kolt_port_device_class_init(PortDeviceClass* type) {
    type->parent.read_memory = ReadMemory;
    type->parent.write_memory = WriteMemory;
    type->parent.read_register = ReadRegister;
    type->parent.write_register = WriteRegister;
}

void kolt_port_device_init(PortDevice*) {}

} // namespace

namespace support {

AravisMemoryDevice::AravisMemoryDevice(const std::string& xml, MemoryPort& port)
    : m_device(ARV_DEVICE(g_object_new(kolt_port_device_get_type(), nullptr))) {
    reinterpret_cast<PortDevice*>(m_device)->port = &port;
    m_gc = arv_gc_new(m_device, xml.data(), xml.size());
}

AravisMemoryDevice::~AravisMemoryDevice() {
    g_clear_object(&m_gc);
    g_object_unref(m_device);
}

ArvGcNode* AravisMemoryDevice::Node(const std::string& name) const {
    return arv_gc_get_node(m_gc, name.c_str());
}

} // namespace support
