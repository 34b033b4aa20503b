// Recordings and explanations take any bytes: a recording that is read is written the same again, and every
// piece of a line has an explanation.

#include "tnv5/tools/explanation.h"
#include "tnv5/tools/recording.h"

#include <cstdint>
#include <cstdlib>

using namespace tnv5::tools;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    try {
        const QList<TEntry> entries = parseRecording(bytes);
        const QByteArray written = formatRecording(entries);
        if (formatRecording(parseRecording(written)) != written) {
            std::abort();
        }
    } catch (const ERecording&) {
        // refused with a line number, as it should be
    }
    explainTurnstile(bytes);
    explainBus(bytes);
    return 0;
}
