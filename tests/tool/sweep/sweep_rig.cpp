#include "sweep/sweep_rig.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>

#include "jobs/detached_thread.h"
#include "output/progress.h"

namespace {

std::atomic<int> g_jobs{0};
thread_local bool g_in_job = false;

}  // namespace

// Replaces the library's function. The task that clears a job's 100 after three seconds does not
// get a thread, which the library tolerates. Otherwise thousands of such threads would wait at the
// same time.
void borvan::StartDetachedThread(void (*procedure)(void*), void* argument) {
  if (g_in_job) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  ++g_jobs;
  std::thread([procedure, argument] {
    g_in_job = true;
    procedure(argument);
    --g_jobs;
  }).detach();
}

namespace borvanusb::sweep {
namespace {

// Much longer than a run without a fault, even on a busy machine.
constexpr std::chrono::seconds kHealthyLimit{60};
// The time until a job is abandoned that never ends because of its bad transfer.
constexpr std::chrono::milliseconds kFaultyLimit{400};

// A host can't free the library's arrays. Only the last one is kept here.
UsbDeviceInfo* GetAllDeviceInfo() {
  static std::unique_ptr<UsbDeviceInfo[]> last;
  last.reset(UsbGetAllDeviceInfo());
  return last.get();
}

class SweepHost : public tool_test::FakeHost {
 public:
  explicit SweepHost(CameraLibrary& library) : library_(library) { answer = true; }
  std::vector<CameraIdentity> ListCameras() override { return library_.ListCameras(); }
  std::unique_ptr<borvanusb::Camera> OpenCamera(const CameraIdentity& camera) override {
    return OpenLibraryCamera(library_, camera);
  }

 private:
  CameraLibrary& library_;
};

class NoProgress : public Progress {
 public:
  void Begin(std::string_view /*stage*/, std::uint64_t /*total*/, ProgressUnit /*unit*/) override {}
  void Stage(std::string_view /*stage*/) override {}
  void Advance(std::uint64_t /*done*/) override {}
  void Done() override {}
  void Break() override {}
};

}  // namespace

LibraryPlatform::ScratchFile SweepPlatform::NewScratchFile(std::string_view extension) {
  const std::string name =
      folder.Path("scratch" + std::to_string(++files_) + "." + std::string(extension));
  return {name, name};
}

void SweepPlatform::Sleep(std::chrono::milliseconds /*time*/) {
  // Does not yield, because on a busy machine a yield waits for all other threads.
  std::this_thread::sleep_for(std::chrono::microseconds(10));
}

FoldersInMemory::FoldersInMemory() {
  constexpr const char* kMemory = "/dev/shm";
  if (std::filesystem::is_directory(kMemory)) {
    setenv("TMPDIR", kMemory, 0);
  }
}

SweepTest::SweepTest() : work_(folder_.Path("work")) {
  exports.UsbGetAllDeviceInfo = GetAllDeviceInfo;
}

SweepTest::~SweepTest() {
  camera_.Close();
  borvan_test::WaitUntil([] { return g_jobs == 0; });
}

void SweepTest::StartAnew(const Content& content) {
  std::filesystem::current_path(std::filesystem::temp_directory_path());
  std::filesystem::remove_all(work_);
  std::filesystem::create_directory(work_);
  // Backups without a given name are written to the current folder.
  std::filesystem::current_path(work_);
  camera_.PlugIn(content);
}

std::string SweepTest::Put(const std::string& name, const Bytes& bytes) const {
  return Put(name, std::string(bytes.begin(), bytes.end()));
}

std::string SweepTest::Put(const std::string& name, const std::string& text) const {
  std::ofstream(File(name), std::ios::binary) << text;
  return File(name);
}

std::optional<Bytes> SweepTest::Read(const std::string& name) const {
  std::ifstream file(File(name), std::ios::binary);
  if (!file.is_open()) {
    return std::nullopt;
  }
  return Bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> SweepTest::FilesThatEnd(const std::string& ending) const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(work_)) {
    if (std::string name = entry.path().filename().string(); name.ends_with(ending)) {
      names.push_back(std::move(name));
    }
  }
  return names;
}

RunEnd SweepTest::Perform(const std::function<ExitCode(Context&)>& command,
                          const std::optional<Fault>& fault) {
  *script = {};
  script->cameras = {borvan_test::MakeCamera(u'a')};
  script->cameras.front().vendor_nodes.push_back({camera_.Open(fault), 3});
  const std::chrono::milliseconds limit = fault ? kFaultyLimit : kHealthyLimit;
  library.emplace(exports, platform_, supervisor, limit);
  SweepHost host(*library);
  host.journal_folder = File("journals");
  tool_test::FakeOutput output;
  NoProgress progress;
  const CommonArguments common;
  RunEnd end;
  end.result = nlohmann::ordered_json::object();
  Context context{common, host, output, progress, end.result};
  try {
    end.code = command(context);
  } catch (const Failure& failure) {
    end.code = failure.Code();
    end.message = failure.Message();
  }
  end.out = std::move(output.out);
  camera_.Close();
  library.reset();
  borvan::GlobalInstance().Set(nullptr);
  return end;
}

}  // namespace borvanusb::sweep
