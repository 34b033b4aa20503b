#include "integration/club_site.h"
namespace tnv5::integration {
namespace {
} // namespace
} // namespace tnv5::integration
