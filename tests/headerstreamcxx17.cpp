// The program stream reader's header compiled alone as C++17: what a host in C++ binds to.
#include "vobsub/psstream.h"

#include <type_traits>

static_assert(std::is_same_v<decltype(DecodePSStream), void(unsigned char *, int)>);
static_assert(std::is_same_v<decltype(TestVobSub), void()>);
