#include "workbench/worker.h"

#include <array>
#include <nlohmann/json.hpp>

namespace borvanusb {

namespace {

constexpr std::array<const char*, 4> kOrders = {"enter", "run", "repeat", "stop"};
constexpr std::array<const char*, 4> kReports = {"out", "error", "round", "end"};

std::string Text(const nlohmann::json& json) {
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

template <typename Kind>
std::optional<Kind> KindOf(const std::array<const char*, 4>& names, const std::string& name) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (name == names[i]) {
      return static_cast<Kind>(i);
    }
  }
  return std::nullopt;
}

nlohmann::json JsonOf(const std::vector<WorkerOrder::Repeated>& repeated) {
  nlohmann::json list = nlohmann::json::array();
  for (const WorkerOrder::Repeated& each : repeated) {
    list.push_back({{"words", each.words}, {"rate", each.rate}});
  }
  return list;
}

std::vector<WorkerOrder::Repeated> RepeatedIn(const nlohmann::json& list) {
  std::vector<WorkerOrder::Repeated> repeated;
  for (const nlohmann::json& each : list) {
    repeated.push_back(
        {each.at("words").get<std::vector<std::string>>(), each.at("rate").get<double>()});
  }
  return repeated;
}

}  // namespace

std::string LineOf(const WorkerOrder& order) {
  return Text({{"order", kOrders.at(static_cast<std::size_t>(order.kind))},
               {"number", order.number},
               {"words", order.words},
               {"repeated", JsonOf(order.repeated)},
               {"text", order.text}});
}

std::string LineOf(const WorkerReport& report) {
  return Text({{"report", kReports.at(static_cast<std::size_t>(report.kind))},
               {"number", report.number},
               {"text", report.text},
               {"code", report.code},
               {"index", report.index}});
}

std::optional<WorkerOrder> ReadOrder(std::string_view line) {
  try {
    const nlohmann::json json = nlohmann::json::parse(line);
    const auto kind = KindOf<WorkerOrder::Kind>(kOrders, json.at("order").get<std::string>());
    if (!kind) {
      return std::nullopt;
    }
    return WorkerOrder{*kind, json.at("number").get<std::uint64_t>(),
                       json.at("words").get<std::vector<std::string>>(),
                       RepeatedIn(json.at("repeated")), json.at("text").get<std::string>()};
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  }
}

std::optional<WorkerReport> ReadReport(std::string_view line) {
  try {
    const nlohmann::json json = nlohmann::json::parse(line);
    const auto kind = KindOf<WorkerReport::Kind>(kReports, json.at("report").get<std::string>());
    if (!kind) {
      return std::nullopt;
    }
    return WorkerReport{*kind, json.at("number").get<std::uint64_t>(),
                        json.at("text").get<std::string>(), json.at("code").get<int>(),
                        json.at("index").get<std::size_t>()};
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  }
}

}  // namespace borvanusb
