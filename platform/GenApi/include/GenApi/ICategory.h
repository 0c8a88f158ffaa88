#pragma once
/// A group of features, as they are shown to people.
#include "GenApi/Container.h"
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API ICategory : public virtual IValue {
public:
    /// In the XML's order; names without a node are left out.
    virtual void GetFeatures(FeatureList_t& Features) const = 0;
};

} // namespace GenApi_3_0
