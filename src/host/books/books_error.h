#pragma once

#include "tnv5/platform/errors.h"

namespace tnv5::host {

/// What the books cannot do, in one plain sentence for the person who asked.
class EBooks : public platform::Exception
{
public:
    using Exception::Exception;
};

} // namespace tnv5::host
