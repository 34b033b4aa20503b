#pragma once

#include <QString>

namespace tnv5::js {

/// The script that makes the wrappers: what a script of the host's sees of objects, records and procedures.
/// It gives a function that takes the bridge and the global object and gives the functions that the engine
/// calls.
QString preludeText();

/// Its file in the stacks of errors; these calls are not shown to people.
constexpr char kPreludeFile[] = "qrc:/tnv5/prelude.js";

} // namespace tnv5::js
