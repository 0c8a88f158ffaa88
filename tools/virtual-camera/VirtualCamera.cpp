#include "VirtualCamera.h"

#include "Network/GvcpServer.h"

#include <stdexcept>

namespace vcam {

namespace {

Site MakeSite(const Config& config) {
    Site site;
    if (!ParseDotted(config.address, site.address))
        throw std::invalid_argument("\"" + config.address + "\" is no IPv4 address");
    if (!config.mask.empty() && !ParseDotted(config.mask, site.mask))
        throw std::invalid_argument("\"" + config.mask + "\" is no IPv4 mask");
    if (!ParseDotted(config.gateway, site.gateway))
        throw std::invalid_argument("\"" + config.gateway + "\" is no IPv4 address");
    const std::optional<HostAddress> home = FindHostAddress(site.address);
    site.interface = config.interface;
    if (home && (config.interface.empty() || config.interface == home->interface)) {
        site.interface = home->interface;
        site.loopback = home->loopback;
        if (site.mask == 0)
            site.mask = home->mask;
        return site;
    }
    if (config.interface.empty())
        throw std::invalid_argument("no interface has the address " + config.address);
    if (!InterfaceExists(config.interface))
        throw std::invalid_argument("there is no interface " + config.interface);
    if (site.mask == 0)
        site.mask = 0xFFFFFF00;
    AddHostAddress(site.interface, site.address, site.mask);
    site.added = true;
    return site;
}

} // namespace

class VirtualCamera::Impl {
public:
    Impl(const Config& config, std::shared_ptr<Flash> flash)
        : model(config, faults, counters, std::move(flash))
        , stream(model, faults, counters, model.LookedAt())
        , server(model, stream, faults, counters) {
        model.Attach(&stream, [this] { server.Wake(); });
        faults.Set(config.faults);
        model.ApplyXmlFault();
    }
    ~Impl() {
        server.Stop(); // first the one that gives orders
        stream.Stop();
    }
    void Start(const Config& config) {
        const Site site = MakeSite(config);
        try {
            stream.Start(site.address, site.loopback ? std::string() : site.interface);
            server.Start(site);
        } catch (...) {
            if (site.added)
                RemoveHostAddress(site.interface, site.address, site.mask);
            throw;
        }
    }

    FaultPanel faults;
    CounterBoard counters;
    DeviceModel model;
    StreamSender stream;
    GvcpServer server;
};

VirtualCamera::VirtualCamera(Config config)
    : m_config(std::make_unique<Config>(std::move(config))), m_flash(std::make_shared<Flash>()) {}

VirtualCamera::~VirtualCamera() = default;

void VirtualCamera::Start() {
    m_impl.reset();
    auto impl = std::make_unique<Impl>(*m_config, m_flash);
    impl->Start(*m_config);
    m_impl = std::move(impl);
}

void VirtualCamera::Stop() {
    m_impl.reset();
}

VirtualCamera::Impl& VirtualCamera::Running() const {
    if (!m_impl)
        throw std::logic_error("the camera is not started");
    return *m_impl;
}

std::string VirtualCamera::Address() const {
    return Dotted(Running().server.Address());
}

Counters VirtualCamera::GetCounters() const {
    return Running().counters.Get();
}

std::vector<FrameLoss> VirtualCamera::LossyFrames() const {
    return Running().stream.LossyFrames();
}

Faults VirtualCamera::GetFaults() const {
    return Running().faults.Get();
}

void VirtualCamera::SetFaults(const Faults& faults) {
    Impl& impl = Running();
    const bool xml = faults.xml != impl.faults.Get().xml;
    impl.faults.Set(faults);
    if (xml)
        impl.model.ApplyXmlFault();
}

std::vector<Patch> VirtualCamera::Patches() const {
    return Running().model.Patches();
}

std::string VirtualCamera::Xml() const {
    return Running().model.Xml();
}

bool VirtualCamera::IsStreaming() const {
    return Running().stream.IsBusy();
}

bool VirtualCamera::IsControlled() const {
    return Running().server.IsControlled();
}

void VirtualCamera::FireLine(uint32_t line) {
    if (line > 3)
        throw std::out_of_range("the lines are 0 to 3");
    Running().model.PulseLine(line);
}

void VirtualCamera::SetLine(uint32_t line, bool high) {
    if (line > 3)
        throw std::out_of_range("the lines are 0 to 3");
    Running().model.SetLine(line, high);
}

bool VirtualCamera::ReadRegister(uint32_t address, uint32_t& value) {
    Bytes bytes(4);
    const bool done = Running().model.Memory().Read(address, bytes.data(), bytes.size()) == Status::Success;
    if (done)
        value = Get32(bytes.data());
    return done;
}

bool VirtualCamera::WriteRegister(uint32_t address, uint32_t value) {
    Bytes bytes(4);
    Put32(bytes.data(), value);
    size_t written = 0;
    return Running().model.Memory().Write(address, bytes.data(), bytes.size(), written) == Status::Success;
}

} // namespace vcam
