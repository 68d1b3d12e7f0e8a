#pragma once

#include <functional>

namespace borvan {

// Returns true if the host wants the running work to end. Never empty. How often an operation calls
// it is part of the operation's behaviour.
using StopQuery = std::function<bool()>;

}  // namespace borvan
