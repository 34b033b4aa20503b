#pragma once

#include <ole2.h>

#include <ocidl.h>
#include <olectl.h>

namespace tnv5::tests {

/// Source interface of the test object.
extern const IID kEvents;

/// An automation object whose manners are known: arguments by reference of every kind, exceptions with and
/// without a text, properties, events.
///
///     Version                  a property, read only
///     Speed                    a property
///     Child                    a property, an object
///     Swap(&a, &b)             exchanges two numbers, gives "swapped"
///     Fill(&text, &variant)    "new" and 7
///     Echo(value)
///     Fail, FailLater, FailBare, FailSource
///     Tell(text)               raises "OnMsgReceived" (text) and "OnTrxComplete" (51), each told by number
///     TellByName(text)         the same for the event "OnElse", whose number its listener is asked for
IDispatch* makeTestObject();

/// How many of them there are.
int testObjects();

/// Makes "Tnv5.TestObject" a class of this process. @return what ends that
DWORD registerTestClass();
void unregisterTestClass(DWORD registration);

} // namespace tnv5::tests
