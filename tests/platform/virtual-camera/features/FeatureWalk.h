// Uses every feature of a rig's node map as its ranges allow and a little beyond, for every value of its
// selectors, and compares each time with the register behind it.
#ifndef KOLT_TESTS_VCAM_FEATUREWALK_H
#define KOLT_TESTS_VCAM_FEATUREWALK_H

#include <map>
#include <set>

#include "FeatureRig.h"

namespace kolt::test {

struct FeatureWalkReport {
    std::set<std::string> notImplemented;
    std::set<std::string> visited; // features that could be used at least once
    unsigned contexts = 0;         // values of selectors under which features were visited
    unsigned reads = 0;
    unsigned writes = 0;   // that were taken
    unsigned refusals = 0; // writes that the node map and the register refused alike
    std::vector<std::string> faults;
};

FeatureWalkReport WalkFeatures(FeatureRig& rig);

} // namespace kolt::test

#endif
