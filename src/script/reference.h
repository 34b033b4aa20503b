#pragma once

#include <QString>

namespace tnv5::script {

/// What scripts can use, unit by unit, as a page of the documentation: made from what the units register and
/// from the published properties and events of their classes, so that it cannot say anything else.
QString scriptReference();

} // namespace tnv5::script
