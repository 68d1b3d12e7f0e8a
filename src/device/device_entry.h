#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace borvan {

// One device of the system's video-input category. The object holds a reference to it.
class VideoInputMoniker {
 public:
  VideoInputMoniker() = default;
  VideoInputMoniker(const VideoInputMoniker&) = delete;
  VideoInputMoniker& operator=(const VideoInputMoniker&) = delete;
  virtual ~VideoInputMoniker() = default;
};

// One enumerated camera. Texts are 8-bit, in the system's ANSI code page.
struct DeviceEntry {
  std::string path;  // the device path, lower-cased
  std::string name;
  std::int32_t vid = 0;
  std::int32_t pid = 0;
  std::shared_ptr<VideoInputMoniker> moniker;
};

}  // namespace borvan
