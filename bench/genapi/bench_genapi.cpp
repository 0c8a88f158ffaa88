// The node map beside Aravis' on the same XML and the same memory. Times are medians; each row says what one
// is.
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "GenApi/GenApi.h"
#include "support/AravisMemoryDevice.h"
#include "support/GenICamXmlGenerator.h"
#include "support/MemoryPort.h"

namespace {

using namespace GenApi_3_0;
using support::AravisMemoryDevice;
using support::FeatureKind;
using support::GeneratedCamera;
using support::GeneratedFeature;
using support::MemoryPort;

using Clock = std::chrono::steady_clock;

double Nanoseconds(Clock::duration time) {
    return std::chrono::duration<double, std::nano>(time).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The median time of one call of work, in ns.
double Time(int rounds, const std::function<void()>& work) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        work();
        times.push_back(Nanoseconds(Clock::now() - start));
    }
    return Median(std::move(times));
}

void Row(const char* what, const char* unit, double ours, double theirs, const char* remark = "") {
    if (theirs > 0) {
        std::printf("%-52s %10.2f %10.2f %8.2fx  %-4s %s\n", what, ours, theirs, theirs / ours, unit, remark);
    } else {
        std::printf("%-52s %10.2f %10s %9s  %-4s %s\n", what, ours, "-", "-", unit, remark);
    }
}

std::size_t HeapInUse() {
    return mallinfo2().uordblks + mallinfo2().hblkhd;
}

// Heap that load takes and keeps, measured in a process of its own: what was loaded and freed before leaves
// caches behind.
double HeapOf(const std::function<void(const std::function<void()>&)>& load) {
    int ends[2];
    if (pipe(ends) != 0) {
        return 0;
    }
    const pid_t child = fork();
    if (child == 0) {
        const std::size_t before = HeapInUse();
        load([&] {
            const double used = static_cast<double>(HeapInUse() - before);
            if (write(ends[1], &used, sizeof used) != sizeof used) {
                _exit(1);
            }
        });
        _exit(0);
    }
    double used = 0;
    close(ends[1]);
    if (read(ends[0], &used, sizeof used) != sizeof used) {
        used = 0;
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return used;
}

struct Map {
    explicit Map(const std::string& xml)
        : ref(CNodeMapFactory(ContentType_Xml, xml.data(), xml.size()).CreateNodeMap("Device"), "Device") {}
    CNodeMapRef ref;
};

volatile double g_sink;

// Our value of a feature, through the interface that its kind has.
void Read(INode* node, FeatureKind kind, bool ignoreCache) {
    switch (kind) {
    case FeatureKind::Integer:
        g_sink = static_cast<double>(CIntegerPtr(node)->GetValue(false, ignoreCache));
        break;
    case FeatureKind::Float:
        g_sink = CFloatPtr(node)->GetValue(false, ignoreCache);
        break;
    case FeatureKind::Enumeration:
        g_sink = static_cast<double>(CEnumerationPtr(node)->GetIntValue(false, ignoreCache));
        break;
    case FeatureKind::Boolean:
        g_sink = CBooleanPtr(node)->GetValue(false, ignoreCache) ? 1 : 0;
        break;
    case FeatureKind::String:
        g_sink = static_cast<double>(CStringPtr(node)->GetValue(false, ignoreCache).size());
        break;
    default:
        break;
    }
}

void Read(ArvGcNode* node, FeatureKind kind) {
    switch (kind) {
    case FeatureKind::Integer:
        g_sink = static_cast<double>(arv_gc_integer_get_value(ARV_GC_INTEGER(node), nullptr));
        break;
    case FeatureKind::Float:
        g_sink = arv_gc_float_get_value(ARV_GC_FLOAT(node), nullptr);
        break;
    case FeatureKind::Enumeration:
        g_sink = static_cast<double>(arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(node), nullptr));
        break;
    case FeatureKind::Boolean:
        g_sink = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), nullptr) ? 1 : 0;
        break;
    case FeatureKind::String: {
        const char* text = arv_gc_string_get_value(ARV_GC_STRING(node), nullptr);
        g_sink = text == nullptr ? 0 : text[0];
        break;
    }
    default:
        break;
    }
}

bool IsThere(const GeneratedFeature& feature) {
    return feature.implemented && feature.available;
}

void Loading(std::size_t features, int rounds) {
    const GeneratedCamera camera = support::GenerateGenICamXml({features, 1, true});
    MemoryPort port(camera.memory);
    const double ours = Time(rounds, [&] { const Map map(camera.xml); });
    const double theirs = Time(rounds, [&] { const AravisMemoryDevice device(camera.xml, port); });
    const std::string name = "load " + std::to_string(camera.features.size()) + " features (" +
                             std::to_string(camera.xml.size() / 1000) + " kB)";
    Row(name.c_str(), "ms", ours / 1e6, theirs / 1e6);
    const auto count = static_cast<double>(camera.features.size());
    Row("  per feature", "us", ours / 1e3 / count, theirs / 1e3 / count);
}

void Memory(const GeneratedCamera& camera) {
    MemoryPort port(camera.memory);
    const double ours = HeapOf([&](const std::function<void()>& loaded) {
        const Map map(camera.xml);
        loaded();
    });
    const double theirs = HeapOf([&](const std::function<void()>& loaded) {
        const AravisMemoryDevice device(camera.xml, port);
        loaded();
    });
    Row("memory of a loaded map of 3000 features", "MB", ours / 1e6, theirs / 1e6);
}

void FirstReads(const GeneratedCamera& camera, int rounds) {
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int i = 0; i < rounds; ++i) {
        MemoryPort port(camera.memory);
        port.Record(false);
        const Map map(camera.xml);
        map.ref._Connect(&port, "Device");
        ours.push_back(Time(1, [&] {
            for (const GeneratedFeature& feature : camera.features) {
                if (IsThere(feature)) {
                    Read(map.ref._GetNode(feature.name.c_str()), feature.kind, false);
                }
            }
        }));
        const AravisMemoryDevice device(camera.xml, port);
        arv_gc_set_register_cache_policy(device.Gc(), ARV_REGISTER_CACHE_POLICY_ENABLE);
        theirs.push_back(Time(1, [&] {
            for (const GeneratedFeature& feature : camera.features) {
                if (IsThere(feature)) {
                    Read(device.Node(feature.name), feature.kind);
                }
            }
        }));
    }
    const auto count = static_cast<double>(camera.features.size());
    Row("first read of a feature, by name", "ns", Median(ours) / count, Median(theirs) / count);
}

void CachedReads(const GeneratedCamera& camera) {
    MemoryPort port(camera.memory);
    port.Record(false);
    const Map map(camera.xml);
    map.ref._Connect(&port, "Device");
    const AravisMemoryDevice device(camera.xml, port);
    arv_gc_set_register_cache_policy(device.Gc(), ARV_REGISTER_CACHE_POLICY_ENABLE);
    constexpr int kReads = 20000;
    for (const FeatureKind kind :
         {FeatureKind::Integer, FeatureKind::Float, FeatureKind::Enumeration, FeatureKind::Boolean}) {
        static const char* const kNames[] = {"Integer", "Float (converter or register)", "Enumeration",
                                             "Boolean"};
        std::vector<const GeneratedFeature*> features;
        for (const GeneratedFeature& feature : camera.features) {
            if (feature.kind == kind && IsThere(feature) && !feature.valueRegister.empty() &&
                features.size() < 100) {
                features.push_back(&feature);
                Read(map.ref._GetNode(feature.name.c_str()), kind, false);
                Read(device.Node(feature.name), kind);
            }
        }
        // What a caller has who keeps his names.
        std::vector<GenICam_3_0::gcstring> names;
        for (const GeneratedFeature* feature : features) {
            names.emplace_back(feature->name.c_str());
        }
        const std::uint64_t accesses = port.Reads();
        const double ours = Time(15, [&] {
            for (int i = 0; i < kReads; ++i) {
                Read(map.ref._GetNode(names[static_cast<std::size_t>(i) % names.size()]), kind, false);
            }
        });
        const bool cached = port.Reads() == accesses;
        const double theirs = Time(15, [&] {
            for (int i = 0; i < kReads; ++i) {
                Read(device.Node(features[static_cast<std::size_t>(i) % features.size()]->name), kind);
            }
        });
        const std::string what = std::string("cached read by name: ") + kNames[static_cast<int>(kind)];
        Row(what.c_str(), "ns", ours / kReads, theirs / kReads,
            cached ? (ours / kReads < 200 ? "bound 200 ns: kept" : "bound 200 ns: MISSED") : "NOT CACHED");
    }
}

void UncachedReads(const GeneratedCamera& camera) {
    MemoryPort port(camera.memory);
    port.Record(false);
    const Map map(camera.xml);
    map.ref._Connect(&port, "Device");
    const AravisMemoryDevice device(camera.xml, port);
    arv_gc_set_register_cache_policy(device.Gc(), ARV_REGISTER_CACHE_POLICY_DISABLE);
    const auto found =
        std::find_if(camera.features.begin(), camera.features.end(), [](const GeneratedFeature& feature) {
            return feature.kind == FeatureKind::Integer && IsThere(feature) &&
                   !feature.valueRegister.empty() && feature.locked;
        });
    INode* const node = map.ref._GetNode(found->name.c_str());
    ArvGcNode* const theirNode = device.Node(found->name);
    Read(node, found->kind, false);
    constexpr int kReads = 20000;
    const std::uint64_t before = port.Reads();
    const double ours = Time(1, [&] {
        for (int i = 0; i < kReads; ++i) {
            Read(node, found->kind, true);
        }
    });
    const std::uint64_t accesses = port.Reads() - before;
    const double theirs = Time(1, [&] {
        for (int i = 0; i < kReads; ++i) {
            Read(theirNode, found->kind);
        }
    });
    const double bare = Time(1, [&] {
        char bytes[4];
        for (int i = 0; i < kReads; ++i) {
            port.Read(bytes, 0x1000, 4);
            g_sink = bytes[0];
        }
    });
    char remark[80];
    std::snprintf(remark, sizeof remark, "%.3f port accesses each%s; the port alone %.0f ns",
                  static_cast<double>(accesses) / kReads, accesses == kReads ? "" : " (MUST BE 1)",
                  bare / kReads);
    Row("uncached read (register in memory)", "ns", ours / kReads, theirs / kReads, remark);
}

void Refresh(std::size_t features, int rounds) {
    const GeneratedCamera camera = support::GenerateGenICamXml({features, 1, true});
    MemoryPort port(camera.memory);
    port.Record(false);
    const Map map(camera.xml);
    map.ref._Connect(&port, "Device");
    const AravisMemoryDevice device(camera.xml, port);
    arv_gc_set_register_cache_policy(device.Gc(), ARV_REGISTER_CACHE_POLICY_DISABLE);
    std::vector<INode*> nodes;
    std::vector<ArvGcNode*> theirNodes;
    for (const GeneratedFeature& feature : camera.features) {
        nodes.push_back(map.ref._GetNode(feature.name.c_str()));
        theirNodes.push_back(device.Node(feature.name));
    }
    const auto readAll = [&] {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if (IsReadable(nodes[i]->GetAccessMode())) {
                Read(nodes[i], camera.features[i].kind, false);
            }
        }
    };
    const double ours = Time(rounds, [&] {
        map.ref._InvalidateNodes();
        readAll();
    });
    const std::uint64_t before = port.Reads();
    const double again = Time(rounds, readAll);
    const std::uint64_t accesses = (port.Reads() - before) / static_cast<std::uint64_t>(rounds);
    const double theirs = Time(rounds, [&] {
        for (std::size_t i = 0; i < theirNodes.size(); ++i) {
            auto* const feature = ARV_GC_FEATURE_NODE(theirNodes[i]);
            if (arv_gc_feature_node_is_available(feature, nullptr) != FALSE &&
                arv_gc_feature_node_get_actual_access_mode(feature) != ARV_GC_ACCESS_MODE_WO) {
                Read(theirNodes[i], camera.features[i].kind);
            }
        }
    });
    const std::string count = std::to_string(camera.features.size());
    Row(("refresh of access mode and value, " + count + " features").c_str(), "ms", ours / 1e6, theirs / 1e6);
    const std::string remark = std::to_string(accesses) + " port accesses (what is never cached)";
    Row("  the same again, all cached", "ms", again / 1e6, 0, remark.c_str());
}

} // namespace

int main() {
    std::printf("%-52s %10s %10s %9s\n", "", "ours", "Aravis", "ratio");
    std::fflush(stdout);
    const GeneratedCamera camera = support::GenerateGenICamXml();
    Memory(camera);
    Loading(300, 15);
    Loading(3000, 9);
    Loading(30000, 3);
    FirstReads(camera, 5);
    CachedReads(camera);
    UncachedReads(camera);
    Refresh(300, 15);
    Refresh(3000, 9);
    Refresh(30000, 3);
    return 0;
}
