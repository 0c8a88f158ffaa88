#include "core/PortFailure.h"

#include <new>

#include "Base/GCException.h"

namespace genapi {

using namespace GenICam_3_0;

namespace {

std::string joined(const std::string& before, const char* text) {
    return before + (text == nullptr || *text == '\0' ? "the port gives no reason" : text);
}

template<class Published>
void rethrowAs(const std::exception& failure, const std::string& before) {
    if (const auto* known = dynamic_cast<const Published*>(&failure))
        throw Published(joined(before, known->GetDescription()).c_str(), known->GetSourceFileName(),
                        known->GetSourceLine());
}

template<class... Published>
void rethrowAsFirstOf(const std::exception& failure, const std::string& before) {
    (rethrowAs<Published>(failure, before), ...);
}

} // namespace

void rethrowWith(const std::exception& failure, const std::string& before) {
    rethrowAsFirstOf<BadAllocException, InvalidArgumentException, OutOfRangeException, PropertyException,
                     RuntimeException, LogicalErrorException, AccessException, TimeoutException,
                     DynamicCastException, GenericException>(failure, before);
    const std::string text = joined(before, failure.what());
    if (dynamic_cast<const std::bad_alloc*>(&failure) != nullptr)
        throw BAD_ALLOC_EXCEPTION("%s", text.c_str());
    throw RUNTIME_EXCEPTION("%s", text.c_str());
}

} // namespace genapi
