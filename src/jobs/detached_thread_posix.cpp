#include <thread>

#include "jobs/detached_thread.h"

namespace borvan {

void StartDetachedThread(void (*procedure)(void*), void* argument) {
  std::thread(procedure, argument).detach();
}

}  // namespace borvan
