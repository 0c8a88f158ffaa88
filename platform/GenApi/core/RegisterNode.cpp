#include "core/RegisterNode.h"

#include <algorithm>
#include <cstring>

#include "core/Evaluation.h"
#include "core/NumberText.h"
#include "core/PortNode.h"

namespace genapi {

using namespace GenApi_3_0;

namespace {

constexpr std::int64_t maxLength = std::int64_t{64}
                                   << 20; // what a register may have at most; cameras have kilobytes
constexpr std::int64_t maxCachedLength = 1 << 20;
constexpr std::int64_t maxPollingTime = std::int64_t{1} << 40; // 34 years in milliseconds, as good as never

} // namespace

RegisterNode::RegisterNode(NodeMap& map, const NodeRecord& record, const Property* properties,
                           std::uint32_t index)
    : ValueNode(map, record, properties, index) {}

RegisterNode::~RegisterNode() = default;

// Loading

void RegisterNode::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Address:
        if (__builtin_add_overflow(m_fixedAddress, linker.integer(*this, property), &m_fixedAddress))
            setFault("its addresses add up to more than 64 bits");
        break;
    case PropertyId::pAddress:
    case PropertyId::pIntSwissKnife:
    case PropertyId::pIndex:
        linkIndex(linker, property);
        break;
    case PropertyId::Length:
        linker.constant(*this, property, m_length);
        break;
    case PropertyId::pLength:
        linker.reference(*this, property, m_length);
        break;
    case PropertyId::AccessMode:
        m_access = linker.accessMode(*this, property);
        break;
    case PropertyId::pPort:
        m_port = linker.port(*this, property);
        break;
    case PropertyId::Cachable:
        if (property.text == "NoCache")
            m_caching = NoCache;
        else if (property.text == "WriteAround")
            m_caching = WriteAround;
        else if (property.text != "WriteThrough")
            setFault("Cachable is '" + std::string(property.text) + "', which is no caching mode");
        break;
    case PropertyId::Endianess:
        if (property.text == "BigEndian")
            m_endianess = BigEndian;
        else if (property.text != "LittleEndian")
            setFault("Endianess is '" + std::string(property.text) + "', which is no byte order");
        break;
    default:
        ValueNode::link(linker, property);
        break;
    }
}

void RegisterNode::linkIndex(Linker& linker, const Property& property) {
    Part part;
    part.node = linker.number(*this, property);
    part.step.constant = 1;
    if (property.id == PropertyId::pIndex) {
        Property step;
        step.text = property.attribute;
        if (property.attributeNamesANode) {
            step.id = PropertyId::pIndex;
            linker.reference(*this, step, part.step);
        } else if (!property.attribute.empty()) {
            step.id = PropertyId::pIndex;
            linker.constant(*this, step, part.step);
        } else {
            part.stepIsLength = true; // entries lie side by side
        }
    }
    if (!m_parts)
        m_parts = std::make_unique<std::vector<Part>>();
    m_parts->push_back(part);
}

void RegisterNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    m_pollingTime = std::min(pollingTime(), maxPollingTime);
    if (m_port == nullptr)
        setFault("pPort is missing");
    if (!m_length.given)
        setFault("Length is missing");
    else if (m_length.node == nullptr && (m_length.constant <= 0 || m_length.constant > maxLength))
        setFault("a length of " + std::to_string(m_length.constant) + " bytes is absurd");
    if (!m_parts && (m_fixedAddress < 0 || m_fixedAddress > INT64_MAX - maxLength))
        setFault("address " + formatInteger(m_fixedAddress, HexNumber) + " is absurd");
    if (m_port == nullptr)
        return;
    if (m_parts || m_length.node != nullptr || m_length.constant <= 0 || m_fixedAddress < 0 ||
        m_fixedAddress > INT64_MAX - maxLength || m_length.constant > maxLength)
        m_port->addRegister(*this);
    else
        m_port->addRegister(*this, m_fixedAddress, m_length.constant);
}

EAccessMode RegisterNode::chainMode(Aspect) {
    EAccessMode mode = Combine(m_access, m_port->mode(Aspect::Full));
    if (mode != NI && m_length.node != nullptr)
        mode = Combine(mode, neededMode(*m_length.node));
    if (mode != NI && m_parts)
        for (const Part& part : *m_parts) {
            mode = Combine(mode, neededMode(*part.node));
            if (part.step.node != nullptr)
                mode = Combine(mode, neededMode(*part.step.node));
        }
    return mode;
}

// Where the bytes are

std::int64_t RegisterNode::length() {
    checkFault();
    if (m_length.node == nullptr)
        return m_length.constant;
    const Evaluation evaluation(*this, Evaluation::Address);
    const std::int64_t length = m_length.get();
    if (length < 0 || length > maxLength) // 0 is a buffer that holds nothing now
        throw RUNTIME_EXCEPTION("%s: %s gives it a length of %lld bytes", label().c_str(),
                                m_length.node->label().c_str(), static_cast<long long>(length));
    return length;
}

std::int64_t RegisterNode::address() {
    checkFault();
    if (!m_parts)
        return m_fixedAddress;
    std::int64_t sum = m_fixedAddress;
    const std::int64_t ownLength = length();
    const Evaluation evaluation(*this, Evaluation::Address);
    for (const Part& part : *m_parts) {
        const std::int64_t step = part.stepIsLength ? ownLength : part.step.get();
        std::int64_t offset = 0;
        if (__builtin_mul_overflow(part.node->checkedInteger(), step, &offset) ||
            __builtin_add_overflow(sum, offset, &sum))
            throw RUNTIME_EXCEPTION("%s: %s takes its address beyond 64 bits", label().c_str(),
                                    part.node->label().c_str());
    }
    if (sum < 0 || sum > INT64_MAX - maxLength)
        throw RUNTIME_EXCEPTION("%s: its address is worked out as %s", label().c_str(),
                                formatInteger(sum, HexNumber).c_str());
    return sum;
}

// Reading

bool RegisterNode::bytesValid() const {
    if (m_bytesEpoch != map().epoch())
        return false;
    return m_pollingTime < 0 || Clock::now() - m_readAt < std::chrono::milliseconds(m_pollingTime);
}

bool RegisterNode::mayCache(std::int64_t length) const {
    return m_caching != NoCache && length <= maxCachedLength;
}

std::uint8_t* RegisterNode::storage(std::int64_t length) {
    if (length <= static_cast<std::int64_t>(sizeof m_small))
        return m_small;
    if (m_largeSize < length) {
        m_large = std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(length));
        m_largeSize = length;
        m_bytesEpoch = 0;
    }
    return m_large.get();
}

const std::uint8_t* RegisterNode::bytes(Reading how, std::int64_t length) {
    if (length == 0)
        return m_small; // no bytes, nothing to ask the camera for
    const std::int64_t from = address();
    if (length == 0)
        return m_small;
    if (m_pollingTime >= 0 || !mayCache(length))
        map().markUncacheable(); // what grows old here must not be kept anywhere above
    const bool held = m_heldAddress == from && m_heldLength == length && bytesValid();
    if (held && !how.ignoreCache)
        return storage(length);
    const auto size = static_cast<std::size_t>(length);
    std::uint8_t fresh[sizeof m_small];
    std::unique_ptr<std::uint8_t[]> freshLarge;
    std::uint8_t* into = fresh;
    if (size > sizeof fresh) {
        freshLarge = std::make_unique<std::uint8_t[]>(size);
        into = freshLarge.get();
    }
    m_port->read(*this, into, from, length);
    const bool news = held && std::memcmp(storage(length), into, size) != 0;
    if (freshLarge) {
        m_large = std::move(freshLarge);
        m_largeSize = length;
    } else {
        std::memcpy(m_small, fresh, size);
    }
    m_heldAddress = from;
    m_heldLength = length;
    m_bytesEpoch = mayCache(length) ? map().epoch() : 0;
    if (m_pollingTime >= 0)
        m_readAt = Clock::now();
    if (news)
        map().changed(
            *this); // the camera changed it by itself, and others were worked out from the old bytes
    return storage(length);
}

// Writing

bool RegisterNode::holdsBytesOf(std::int64_t address, std::int64_t length) const {
    return m_bytesEpoch == map().epoch() && m_heldAddress < address + length &&
           address < m_heldAddress + m_heldLength;
}

void RegisterNode::patch(std::int64_t address, const std::uint8_t* bytes, std::int64_t length) {
    const std::int64_t begin = std::max(address, m_heldAddress);
    const std::int64_t end = std::min(address + length, m_heldAddress + m_heldLength);
    std::memcpy(storage(m_heldLength) + (begin - m_heldAddress), bytes + (begin - address),
                static_cast<std::size_t>(end - begin));
    m_valueEpoch = 0;
}

void RegisterNode::writeBytes(const std::uint8_t* bytes, std::int64_t length) {
    if (length == 0)
        return;
    const std::int64_t to = address();
    const bool whole = length == this->length();
    try {
        m_port->write(*this, bytes, to, length);
    } catch (...) {
        writeFailed(to, length);
        throw;
    }
    writeDone(to, bytes, length, whole);
}

void RegisterNode::writeFailed(std::int64_t address, std::int64_t length) {
    // Whether the camera took the bytes is unknown: the next read asks it.
    std::vector<RegisterNode*> touched;
    m_port->overlapping(address, length, touched);
    std::vector<Node*> old{this};
    old.insert(old.end(), touched.begin(), touched.end());
    for (Node* node : old)
        node->drop();
    map().changed(old);
}

void RegisterNode::addSharers(std::vector<Node*>& nodes) const {
    if (m_port == nullptr)
        return;
    std::vector<RegisterNode*> sharers;
    m_port->overlapping(m_heldAddress, m_heldLength, sharers);
    nodes.insert(nodes.end(), sharers.begin(), sharers.end());
}

void RegisterNode::writeDone(std::int64_t address, const std::uint8_t* bytes, std::int64_t length,
                             bool whole) {
    const bool keep = whole && m_caching == WriteThrough && mayCache(length) && mayRead();
    m_valueEpoch = 0;
    m_bytesEpoch = 0;
    if (keep) {
        std::memcpy(storage(length), bytes, static_cast<std::size_t>(length));
        m_heldAddress = address;
        m_heldLength = length;
        m_bytesEpoch = map().epoch();
        if (m_pollingTime >= 0)
            m_readAt = Clock::now();
    }
    std::vector<RegisterNode*> touched;
    m_port->overlapping(address, length, touched);
    std::vector<Node*> news{this};
    for (RegisterNode* other : touched) {
        if (other == this)
            continue;
        // Others that hold the same bytes see what was written, so that a masked write after this one starts
        // from it.
        if (keep && other->m_caching == WriteThrough && other->holdsBytesOf(address, length))
            other->patch(address, bytes, length);
        else
            other->drop();
        news.push_back(other);
    }
    map().changed(news);
}

// IRegister

void RegisterNode::Set(const uint8_t* pBuffer, int64_t Length, bool Verify) {
    const Operation operation(map());
    if (Verify)
        requireWritable();
    checkFault();
    const std::int64_t own = length();
    const bool fits = isNumber(kind()) ? Length == own : Length > 0 && Length <= own;
    if (pBuffer == nullptr || !fits)
        throw INVALID_ARGUMENT_EXCEPTION("%s: %lld bytes can't be written to a register of %lld",
                                         label().c_str(), static_cast<long long>(Length),
                                         static_cast<long long>(own));
    performWrite(*this, {}, [&] { writeBytes(pBuffer, Length); });
}

void RegisterNode::Get(uint8_t* pBuffer, int64_t Length, bool, bool IgnoreCache) {
    const Operation operation(map());
    requireReadable();
    const std::int64_t own = length();
    const bool fits = isNumber(kind()) ? Length == own : Length > 0 && Length <= own;
    if (pBuffer == nullptr || !fits)
        throw INVALID_ARGUMENT_EXCEPTION("%s: %lld bytes can't be read from a register of %lld",
                                         label().c_str(), static_cast<long long>(Length),
                                         static_cast<long long>(own));
    const Evaluation evaluation(*this, Evaluation::Value);
    std::memcpy(pBuffer, bytes({IgnoreCache}, own), static_cast<std::size_t>(Length));
}

int64_t RegisterNode::GetLength() {
    const Operation operation(map());
    checkFault();
    return length();
}

int64_t RegisterNode::GetAddress() {
    const Operation operation(map());
    checkFault();
    return address();
}

std::string RegisterNode::toText(bool, Reading how) {
    const Evaluation evaluation(*this, Evaluation::Value);
    const std::int64_t size = length();
    return formatBytes(bytes(how, size), static_cast<std::size_t>(size));
}

void RegisterNode::fromText(const std::string& text, bool) {
    std::vector<std::uint8_t> bytes;
    if (!parseBytes(text, bytes))
        throwBadText(text, "row of bytes in hexadecimal digits");
    const std::int64_t own = length();
    if (static_cast<std::int64_t>(bytes.size()) != own)
        throw OUT_OF_RANGE_EXCEPTION("%s: '%s' is not %lld bytes", label().c_str(), text.c_str(),
                                     static_cast<long long>(own));
    performWrite(*this, {}, [&] { writeBytes(bytes.data(), own); });
}

} // namespace genapi
