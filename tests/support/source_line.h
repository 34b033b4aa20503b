#pragma once

namespace tnv5::tests {

/// The line of a test that a helper of tests was called from. (`std::source_location` is what clang 14
/// lacks.) Example: `void expect(int value, TSourceLine where = TSourceLine::current());`
class TSourceLine
{
public:
    static constexpr TSourceLine current(const char* file = __builtin_FILE(), int line = __builtin_LINE())
    {
        return {file, line};
    }

    constexpr const char* file_name() const { return FFile; }
    constexpr int line() const { return FLine; }

private:
    constexpr TSourceLine(const char* file, int line) : FFile(file), FLine(line) {}

    const char* FFile;
    int FLine;
};

} // namespace tnv5::tests
