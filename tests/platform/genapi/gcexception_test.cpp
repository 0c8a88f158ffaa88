#include <string>

#include <gtest/gtest.h>

#include "Base/GCException.h"

using namespace GenICam_3_0;

TEST(GcException, TellsWhatAndWhere) {
    try {
        throw ACCESS_EXCEPTION("node '%s' can't be read, value %d", "Width", 5);
    } catch (const GenericException& exception) {
        EXPECT_STREQ("node 'Width' can't be read, value 5", exception.GetDescription());
        EXPECT_STREQ("gcexception_test.cpp", exception.GetSourceFileName());
        EXPECT_EQ(static_cast<unsigned int>(__LINE__ - 4), exception.GetSourceLine());
        EXPECT_EQ(std::string("node 'Width' can't be read, value 5 : AccessException thrown (file "
                              "'gcexception_test.cpp', line ") +
                      std::to_string(__LINE__ - 7) + ")",
                  exception.what());
    }
}

TEST(GcException, EachClassIsCaughtAsItselfAndAsTheBase) {
    const auto check = [](auto&& raise, const char* name, auto* self) {
        using E = std::remove_pointer_t<decltype(self)>;
        EXPECT_THROW(raise(), E) << name;
        try {
            raise();
        } catch (const std::exception& exception) {
            EXPECT_NE(std::string::npos, std::string(exception.what()).find(std::string(name) + " thrown"))
                << name;
            EXPECT_NE(nullptr, dynamic_cast<const GenericException*>(&exception)) << name;
        }
    };
    check([] { throw GENERIC_EXCEPTION("x"); }, "GenericException", static_cast<GenericException*>(nullptr));
    check([] { throw BAD_ALLOC_EXCEPTION("x"); }, "BadAllocException",
          static_cast<BadAllocException*>(nullptr));
    check([] { throw INVALID_ARGUMENT_EXCEPTION("x"); }, "InvalidArgumentException",
          static_cast<InvalidArgumentException*>(nullptr));
    check([] { throw OUT_OF_RANGE_EXCEPTION("x"); }, "OutOfRangeException",
          static_cast<OutOfRangeException*>(nullptr));
    check([] { throw PROPERTY_EXCEPTION("x"); }, "PropertyException",
          static_cast<PropertyException*>(nullptr));
    check([] { throw RUNTIME_EXCEPTION("x"); }, "RuntimeException", static_cast<RuntimeException*>(nullptr));
    check([] { throw LOGICAL_ERROR_EXCEPTION("x"); }, "LogicalErrorException",
          static_cast<LogicalErrorException*>(nullptr));
    check([] { throw ACCESS_EXCEPTION("x"); }, "AccessException", static_cast<AccessException*>(nullptr));
    check([] { throw TIMEOUT_EXCEPTION("x"); }, "TimeoutException", static_cast<TimeoutException*>(nullptr));
    check([] { throw DYNAMICCAST_EXCEPTION("x"); }, "DynamicCastException",
          static_cast<DynamicCastException*>(nullptr));
}

TEST(GcException, LongTextsAreNotCut) {
    const std::string name(5000, 'n');
    try {
        throw RUNTIME_EXCEPTION("node '%s'", name.c_str());
    } catch (const RuntimeException& exception) {
        EXPECT_EQ("node '" + name + "'", exception.GetDescription());
    }
}

TEST(GcException, ANullTextIsEmpty) {
    const RuntimeException exception(nullptr, nullptr, 0);
    EXPECT_STREQ("", exception.GetDescription());
    EXPECT_STREQ("", exception.GetSourceFileName());
    const RuntimeException copy = exception;
    EXPECT_STREQ(exception.what(), copy.what());
}
