#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "workbench/desk_tools.h"
#include "workbench/handle_request.h"
#include "workbench/lane.h"

namespace borvanusb {

// Manages the cameras, one lane for each, and live reading.
class Desk {
 public:
  using Json = nlohmann::ordered_json;
  // Sends the answer to a request: HTTP status and body.
  using Respond = std::function<void(int status, const Json& body)>;

  explicit Desk(DeskTools tools);
  ~Desk();
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  void Run(const RunOrder& order, Respond respond);
  // Sets what a page reads live. It ends with the page's event stream.
  Json SetLive(const LiveOrder& order);
  bool StopJob(const std::string& job);
  std::optional<std::string> JobText(const std::string& job) const;
  // Calls `tell` with a list of cameras that is at most a second old, or with the last known one if
  // listing fails.
  void TellState(std::function<void(const Json& cameras, const Json& jobs)> tell);

  // The names of the connected pages; a name may be empty. While there is at least one page, the
  // cameras are listed periodically.
  void SetPages(std::vector<std::string> pages);
  bool HasWork() const;
  // Stops all work, as Ctrl-C does.
  void StopAll();
  Json CamerasJson() const;
  // The version of the library. Null while it is unknown, or if there is no library.
  const Json& Library() const { return library_; }

 private:
  struct CameraEntry {
    Json identity;
    Json profile;
  };

  void RunNow(const RunOrder& order, const Respond& respond);
  std::vector<CameraEntry>::iterator FindCamera(const std::string& camera);
  bool IsListed(const std::string& camera);
  std::shared_ptr<Lane> LaneOf(const std::string& camera);
  const WorkbenchJob* FindJob(const std::string& job) const;
  std::unique_ptr<WorkbenchJob> MakeJob(const RunOrder& order);
  std::vector<std::string> LineFor(const std::vector<std::string>& words,
                                   const AcceptedWords& accepted, const std::string& camera) const;
  std::string ShownLine(std::vector<std::string> words, const std::string& camera);
  void ApplyLive(const std::string& camera);
  void Keep(const std::string& job, const Json& answer);
  void Look();
  void ScheduleLook();
  void TakeCameras(const Json& cameras);
  void PrepareSoon(const std::string& camera);
  void AskForProfile(const std::string& camera);
  void AskForLibrary();
  void TellLookProblem(const Json& answer);
  void EndUnusedLanes();

  DeskTools tools_;
  std::shared_ptr<Lane> looker_;
  std::map<std::string, std::shared_ptr<Lane>> lanes_;  // by path; "" without a camera
  std::vector<CameraEntry> cameras_;
  std::map<std::string, Json> profiles_;                     // the last known ones, by path
  std::map<std::string, LiveWishes> lives_;                  // by the camera's path
  std::deque<std::pair<std::string, std::string>> answers_;  // answers of the last jobs, by id
  std::vector<std::function<void()>> waiting_for_state_;
  std::string look_problem_;  // last reported problem
  Json library_;
  bool asked_for_library_ = false;
  std::vector<std::string> pages_;
  bool looking_ = false;
  std::uint64_t looks_ = 0;
  bool look_scheduled_ = false;
  std::optional<std::chrono::steady_clock::time_point> looked_;
  std::uint64_t next_id_ = 1;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace borvanusb
