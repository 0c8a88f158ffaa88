#include "support/GenICamXmlGenerator.h"

#include <gtest/gtest.h>

#include <map>
#include <pugixml.hpp>
#include <set>
#include <string>

namespace {

using support::FeatureKind;
using support::GeneratedCamera;
using support::GenerateGenICamXml;

TEST(GenICamXmlGenerator, MakesTheSameCameraTwiceAndAnotherForAnotherSeed) {
    EXPECT_EQ(GenerateGenICamXml({300, 1, true}).xml, GenerateGenICamXml({300, 1, true}).xml);
    EXPECT_NE(GenerateGenICamXml({300, 1, true}).xml, GenerateGenICamXml({300, 2, true}).xml);
}

TEST(GenICamXmlGenerator, HasAsManyFeaturesAsAskedAndALargeCamerasSize) {
    for (const std::size_t count :
         {std::size_t{1}, std::size_t{30}, std::size_t{31}, std::size_t{300}, std::size_t{3000}}) {
        const GeneratedCamera camera = GenerateGenICamXml({count, 1, true});
        // A pair of masked registers may make one more.
        EXPECT_GE(camera.features.size(), count);
        EXPECT_LE(camera.features.size(), count + 1);
    }
    const std::size_t size = GenerateGenICamXml().xml.size();
    EXPECT_GT(size, 1800000U);
    EXPECT_LT(size, 2600000U);
}

TEST(GenICamXmlGenerator, NamesEachNodeOnceAndRefersOnlyToNodesThatAreThere) {
    const GeneratedCamera camera = GenerateGenICamXml({1000, 7, false});
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(camera.xml.c_str()));
    const pugi::xml_node root = document.child("RegisterDescription");
    std::set<std::string> names;
    std::map<std::string, int> kinds;
    for (const pugi::xml_node node : root.children()) {
        EXPECT_TRUE(names.insert(node.attribute("Name").value()).second) << node.attribute("Name").value();
        ++kinds[node.name()];
    }
    std::set<std::string> listed;
    for (const pugi::xml_node node : root.children()) {
        for (const pugi::xml_node property : node.children()) {
            if (property.name()[0] == 'p') {
                EXPECT_EQ(names.count(property.child_value()), 1U) << property.child_value();
            }
            if (std::string(property.name()) == "pFeature") {
                listed.insert(property.child_value());
            }
        }
    }
    for (const auto& feature : camera.features) {
        EXPECT_EQ(listed.count(feature.name), 1U) << feature.name;
        EXPECT_TRUE(feature.valueRegister.empty() || names.count(feature.valueRegister) == 1) << feature.name;
    }
    for (const char* kind : {"Integer", "IntReg", "MaskedIntReg", "IntSwissKnife", "IntConverter", "Float",
                             "FloatReg", "SwissKnife", "Converter", "Boolean", "Command", "Enumeration",
                             "StringReg", "Register", "Category", "Port"}) {
        EXPECT_GT(kinds[kind], 0) << kind;
    }
}

TEST(GenICamXmlGenerator, SomeFeaturesAreMissingOrLocked) {
    const GeneratedCamera camera = GenerateGenICamXml();
    int missing = 0;
    int away = 0;
    int locked = 0;
    int selected = 0;
    for (const auto& feature : camera.features) {
        missing += feature.implemented ? 0 : 1;
        away += feature.available ? 0 : 1;
        locked += feature.locked ? 1 : 0;
        selected += feature.selector.empty() ? 0 : 1;
    }
    EXPECT_GT(missing, 5);
    EXPECT_GT(away, 5);
    EXPECT_GT(locked, 100);
    EXPECT_GT(selected, 100);
}

} // namespace
