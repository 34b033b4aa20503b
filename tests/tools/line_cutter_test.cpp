#include "support/text_printers.h"
#include "tnv5/tools/line_cutter.h"

#include <gtest/gtest.h>
#include <random>

namespace tnv5::tools {

namespace {

QByteArrayList cut(TProtocol protocol, const QByteArray& bytes, qsizetype size)
{
    TLineCutter cutter(protocol);
    QByteArrayList pieces;
    for (qsizetype at = 0; at < bytes.size(); at += size) {
        pieces += cutter.take(QByteArrayView(bytes).sliced(at, std::min(size, bytes.size() - at)));
    }
    return pieces + cutter.pause();
}

void expectPieces(TProtocol protocol, const QByteArrayList& pieces)
{
    const QByteArray all = pieces.join();
    for (qsizetype size = 1; size <= all.size(); ++size) {
        EXPECT_EQ(cut(protocol, all, size), pieces) << size;
    }
}

} // namespace

TEST(LineCutter, TurnstileLines)
{
    expectPieces(TProtocol::Turnstile,
                 {"noise", "$01AR12345678\r", "$01A10366\r", "#01ARelay 1\r", "\n", "$01AP$x\r", "$01"});
}

TEST(LineCutter, BusLinesAndCommands)
{
    expectPieces(TProtocol::Bus, {"$000APING\r", "$000AECHOB6", "$000AHW29", "$000BHWE3", "#000ABT\r"});
}

TEST(LineCutter, TextOfARowMayHoldStartCharacters)
{
    expectPieces(TProtocol::Bus, {"$000APSN1001 pay $1000 #1ABC03", "$000AHW29", "$000APING\r"});
}

TEST(LineCutter, DamagedCommandEndsAtTheNextLine)
{
    expectPieces(TProtocol::Bus, {"$000AGO0", "$000APING\r"});
}

TEST(LineCutter, BothSidesOfAScale)
{
    const auto expectOfScale = [](int family, const QByteArrayList& pieces) {
        const QByteArray all = pieces.join();
        for (qsizetype size = 1; size <= all.size(); ++size) {
            TLineCutter cutter(TProtocol::Scales, family);
            QByteArrayList got;
            for (qsizetype at = 0; at < all.size(); at += size) {
                got += cutter.take(QByteArrayView(all).sliced(at, std::min(size, all.size() - at)));
            }
            EXPECT_EQ(got + cutter.pause(), pieces) << family << ' ' << size;
        }
    };
    expectOfScale(2, {"\x05", "\x06", "\x11", "\x01\x02S 01.234kge\x03\x04"});
    expectOfScale(3, {QByteArray("\x00\x00\x03", 3), "005100000000000000"});
    expectOfScale(4, {QByteArray("\x00\x00\x03\x00\x00\x00\x00\x00", 8), "00521000000000000"});
    expectOfScale(5, {QByteArray("<\x00!>", 4), QByteArray("<\x00!00750\r>", 10)});
    expectOfScale(6, {"\x05\r", "B 00.850 kg\r\n", "\x05\r"});
}

TEST(LineCutter, NothingIsLostAndNothingGrows)
{
    std::mt19937 random(3);
    const QByteArray letters = "$#\r0AB\x80";
    for (const TProtocol protocol : {TProtocol::Bus, TProtocol::Turnstile}) {
        TLineCutter cutter(protocol);
        QByteArray given;
        QByteArray got;
        for (int i = 0; i < 20'000; ++i) {
            QByteArray bytes;
            for (unsigned length = random() % 40; length > 0; --length) {
                bytes += letters[static_cast<qsizetype>(random() % static_cast<unsigned>(letters.size()))];
            }
            given += bytes;
            got += cutter.take(bytes).join();
            ASSERT_LE(given.size() - got.size(), TLineCutter::kMaxPiece);
        }
        got += cutter.pause().join();
        EXPECT_EQ(given, got);
        EXPECT_FALSE(cutter.waiting());
    }
}

TEST(LineCutter, EndlessLineIsCut)
{
    const auto pieces = cut(TProtocol::Turnstile, '$' + QByteArray(10'000, 'x'), 1'000);
    EXPECT_EQ(pieces.size(), 3);
    EXPECT_EQ(pieces[0].size(), TLineCutter::kMaxPiece);
}

} // namespace tnv5::tools
