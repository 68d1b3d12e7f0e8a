#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace borvanusb {

// Starts this program several times in parallel; see Host::RunChildren. Throws Failure kInternal if
// a process can't be started.
std::vector<int> RunChildProcesses(
    const std::vector<std::vector<std::string>>& arguments,
    const std::function<void(std::size_t, bool, const std::string&)>& on_line);

}  // namespace borvanusb
