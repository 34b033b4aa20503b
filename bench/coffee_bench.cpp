// Texts for the coffee machine per second, beside the bare encryption of one block by the cryptographic
// library. The key schedule is made for every block in all of them.

#include "tnv5/coffee/qr_text.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

namespace tnv5::bench {

namespace {

constexpr unsigned char kKey[16] = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                                    0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};

/// The whole text, with the system's clock.
void CoffeeTexts(benchmark::State& state)
{
    const QString key = QStringLiteral("2b7e151628aed2a6abf7158809cf4f3c");
    int value = 0;
    for (auto _ : state) {
        const QByteArray text = coffee::_qrcodestr(1, 2, 3, 250, ++value, key);
        benchmark::DoNotOptimize(text.constData());
    }
    state.SetItemsProcessed(state.iterations());
}

bool encipher(EVP_CIPHER_CTX* context, const EVP_CIPHER* cipher, unsigned char* block)
{
    int size = 0;
    return EVP_EncryptInit_ex2(context, cipher, kKey, nullptr, nullptr) == 1 &&
           EVP_CIPHER_CTX_set_padding(context, 0) == 1 &&
           EVP_EncryptUpdate(context, block, &size, block, 16) == 1;
}

/// One block, with a context of its own as a function needs that keeps no key, or with one that is kept.
void BareBlocks(benchmark::State& state)
{
    const bool kept = state.range(0) != 0;
    EVP_CIPHER* cipher = EVP_CIPHER_fetch(nullptr, "AES-128-ECB", nullptr);
    EVP_CIPHER_CTX* keptContext = EVP_CIPHER_CTX_new();
    unsigned char block[16] = {0x83};
    while (state.KeepRunning()) {
        EVP_CIPHER_CTX* context = kept ? keptContext : EVP_CIPHER_CTX_new();
        if (!encipher(context, cipher, block)) {
            state.SkipWithError("no encryption");
            break;
        }
        benchmark::DoNotOptimize(block);
        if (!kept) {
            EVP_CIPHER_CTX_free(context);
        }
    }
    state.SetItemsProcessed(state.iterations());
    EVP_CIPHER_CTX_free(keptContext);
    EVP_CIPHER_free(cipher);
}

BENCHMARK(CoffeeTexts);
BENCHMARK(BareBlocks)->ArgName("kept")->Arg(0)->Arg(1);

} // namespace

} // namespace tnv5::bench

BENCHMARK_MAIN();
