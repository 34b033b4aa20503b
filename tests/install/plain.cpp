// Built against the installed package without CMake: pkg-config says how.

#include <cstdio>
#include <tnv5/turnstile/turnstile_device.h>
#include <tnv5/version.h>

static_assert(TNV5_VERSION >= TNV5_VERSION_CHECK(0, 1, 0));
static_assert(TNV5_VERSION < TNV5_VERSION_CHECK(TNV5_VERSION_MAJOR + 1, 0, 0));

int main()
{
    const tnv5::turnstile::TTurnStylerDevice gate;
    std::printf("installed package %s: found by pkg-config\n", TNV5_VERSION_STRING);
    return gate.RelayOpen() == 1 ? 0 : 1;
}
