#include "support/text_printers.h"
#include "tnv5/common/read_up_to.h"

#include <QBuffer>
#include <gtest/gtest.h>
#include <vector>

namespace tnv5::common {
namespace {

/// Gives three bytes at once, as a pipe might, and counts what it was asked for.
class TDribbling final : public QIODevice
{
public:
    explicit TDribbling(QByteArray bytes) : FBytes(std::move(bytes)) { open(ReadOnly | Unbuffered); }

    bool isSequential() const override { return true; }
    std::vector<qint64> wanted;

protected:
    qint64 readData(char* data, qint64 most) override
    {
        wanted.push_back(most);
        const qint64 count = std::min({most, qint64{3}, FBytes.size()});
        std::copy_n(FBytes.begin(), count, data);
        FBytes.remove(0, count);
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray FBytes;
};

TEST(ReadUpTo, TheEndOrTheLimit)
{
    QBuffer buffer;
    buffer.setData(QByteArray(200'000, 'x'));
    buffer.open(QIODevice::ReadOnly);
    EXPECT_EQ(ReadUpTo(buffer, 0).size(), 0);
    EXPECT_EQ(ReadUpTo(buffer, 150'000).size(), 150'000);
    EXPECT_EQ(ReadUpTo(buffer, 50'001), QByteArray(50'000, 'x'));
    EXPECT_EQ(ReadUpTo(buffer, 10), QByteArray());
}

TEST(ReadUpTo, AllThatComesInPieces)
{
    TDribbling pipe("0123456789");
    EXPECT_EQ(ReadUpTo(pipe, 8), "01234567");
    EXPECT_EQ(ReadUpTo(pipe, 8), "89");
}

TEST(ReadUpTo, ASmallFileTakesNoMemoryForTheLargest)
{
    TDribbling pipe("0123456789");
    EXPECT_EQ(ReadUpTo(pipe, qint64{1} << 40), "0123456789");
    for (const qint64 wanted : pipe.wanted) {
        EXPECT_LE(wanted, 65'536);
    }
}

} // namespace
} // namespace tnv5::common
