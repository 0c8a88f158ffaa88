#pragma once
/// The whole published interface.
#include "Base/GCException.h"
#include "GenApi/NodeMapFactory.h"
#include "GenApi/NodeMapRef.h"
#include "GenApi/Pointer.h"
