#pragma once
/// Something that the camera does when told to.
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API ICommand : public virtual IValue {
public:
    /// Doesn't wait for the end of what it starts.
    virtual void Execute(bool Verify = true) = 0;
    void operator()() { Execute(); }
    /// Whether the camera has finished. Reads the camera where the command's register can be read; where it
    /// can't, the command is done at once.
    virtual bool IsDone(bool Verify = true) = 0;
};

} // namespace GenApi_3_0
