// The program stream reader's header, compiled alone as C++17: the types that a host in C++ relies on.
#include "vobsub/psstream.h"

#include <type_traits>

static_assert(std::is_same_v<decltype(DecodePSStream), void(unsigned char *, int)>);
static_assert(std::is_same_v<decltype(TestVobSub), void()>);
