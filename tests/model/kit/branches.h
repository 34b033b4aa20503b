#pragma once

#include <QtGlobal>
#include <algorithm>
#include <vector>

namespace tnv5::modelkit {

/// A way that a model can go, and how often it went. It is named where it is counted and known to the test
/// before anything is played, so that a scenario generator that misses one is found out.
struct TBranch
{
    explicit TBranch(const char* text);
    const char* name;
    qint64 count = 0;
};
/// All branches of the program.
std::vector<TBranch*>& branches();

template <std::size_t Size>
struct TName
{
    char text[Size]{};
    consteval TName(const char (&name)[Size]) // NOLINT(google-explicit-constructor)
    {
        std::copy_n(name, Size, text);
    }
};

template <TName name>
inline TBranch branch{name.text};

template <TName name>
void hit()
{
    ++branch<name>.count;
}

/// Counts which way a test went, and gives its result.
template <TName yes, TName no>
bool either(bool test)
{
    ++(test ? branch<yes> : branch<no>).count;
    return test;
}

/// Counts the way of a number from 0 on.
template <TName... names>
void way(int number)
{
    TBranch* const all[] = {&branch<names>...};
    ++all[number]->count;
}

} // namespace tnv5::modelkit
