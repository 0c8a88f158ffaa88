#pragma once
/// A feature whose value decides which instance of other features is seen.
#include "GenApi/Container.h"
#include "GenApi/IBase.h"

namespace GenApi_3_0 {

class GENAPI_API ISelector : public virtual IBase {
public:
    virtual bool IsSelector() const = 0;
    virtual void GetSelectedFeatures(FeatureList_t& list) const = 0;
    virtual void GetSelectingFeatures(FeatureList_t& list) const = 0;
};

} // namespace GenApi_3_0
