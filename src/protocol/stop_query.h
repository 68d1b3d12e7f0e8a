#pragma once

#include <functional>

namespace borvan {

// True when the host wants the running work to end. Never empty; how often it is asked is part of
// an operation's behaviour.
using StopQuery = std::function<bool()>;

}  // namespace borvan
