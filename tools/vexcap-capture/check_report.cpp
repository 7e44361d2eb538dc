#include "check_report.h"

#include <chrono>
#include <cstdio>

#include "interrupt.h"
#include "json_value.h"
#include "tool_error.h"

namespace vexcap::tool {
namespace {

const char* outcome_name(Outcome outcome) {
  switch (outcome) {
    case Outcome::Pass: return "pass";
    case Outcome::Fail: return "fail";
    case Outcome::NotSupported: return "not supported";
  }
  return "";
}

std::string xml_text(const std::string& text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\n': out += "&#10;"; break;
      default:
        if (static_cast<unsigned char>(c) >= 0x20 || c == '\t') out += c;  // XML 1.0 has no other controls
    }
  }
  return out;
}

std::string seconds_text(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", seconds);
  return text;
}

}  // namespace

void CheckReport::record(const std::string& name, const Verdict& verdict, double seconds) {
  const char* label = "PASS";
  switch (verdict.outcome) {
    case Outcome::Pass: ++passed_; break;
    case Outcome::Fail: ++failed_; label = "FAIL"; break;
    case Outcome::NotSupported: ++not_supported_; label = "N/S "; break;
  }
  entries_.push_back({name, verdict, seconds});
  if (!print_lines_) return;
  std::printf("%s  %-54s %s\n", label, name.c_str(), verdict.detail.c_str());
  std::fflush(stdout);
}

void CheckReport::run(const std::string& name, const std::function<Verdict()>& check) {
  if (interrupted()) return;
  const auto started = std::chrono::steady_clock::now();
  Verdict verdict{Outcome::Fail, ""};
  try {
    verdict = check();
  } catch (const ToolError& error) {
    verdict = {Outcome::Fail, error.what()};
  }
  if (interrupted()) {
    if (!cut_short_) cut_short_ = name;
    return;
  }
  record(name, verdict, std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
}

void CheckReport::print_totals() const {
  if (cut_short_) std::printf("interrupted during \"%s\": the checks above ran in full\n", cut_short_->c_str());
  else if (interrupted()) std::printf("interrupted: the checks above ran in full\n");
  std::printf("check: %u passed, %u failed, %u not supported\n", passed_, failed_, not_supported_);
}

std::string CheckReport::json() const {
  JsonValue checks = JsonValue::array();
  for (const CheckEntry& entry : entries_) {
    JsonValue item = JsonValue::object();
    item.set("name", entry.name);
    item.set("outcome", outcome_name(entry.verdict.outcome));
    item.set("detail", entry.verdict.detail);
    item.set("seconds", entry.seconds);
    checks.push(item);
  }
  JsonValue document = JsonValue::object();
  document.set("checks", checks);
  document.set("passed", passed_);
  document.set("failed", failed_);
  document.set("not_supported", not_supported_);
  document.set("interrupted", interrupted());
  document.set("cut_short", cut_short_ ? JsonValue(*cut_short_) : JsonValue());
  return document.dump();
}

std::string CheckReport::junit_xml() const {
  double total = 0;
  for (const CheckEntry& entry : entries_) total += entry.seconds;
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  xml += "<testsuites>\n  <testsuite name=\"vexcap-capture check\" tests=\"" + std::to_string(entries_.size()) +
         "\" failures=\"" + std::to_string(failed_) + "\" errors=\"0\" skipped=\"" +
         std::to_string(not_supported_) + "\" time=\"" + seconds_text(total) + "\">\n";
  for (const CheckEntry& entry : entries_) {
    // "mode 1 infrared: shared stream" -> class "mode 1 infrared", case "shared stream".
    const std::size_t colon = entry.name.find(": ");
    const std::string group = colon == std::string::npos ? "camera" : entry.name.substr(0, colon);
    const std::string test = colon == std::string::npos ? entry.name : entry.name.substr(colon + 2);
    xml += "    <testcase classname=\"" + xml_text(group) + "\" name=\"" + xml_text(test) + "\" time=\"" +
           seconds_text(entry.seconds) + "\"";
    const std::string detail = xml_text(entry.verdict.detail);
    switch (entry.verdict.outcome) {
      case Outcome::Pass:
        xml += detail.empty() ? "/>\n" : ">\n      <system-out>" + detail + "</system-out>\n    </testcase>\n";
        break;
      case Outcome::Fail:
        xml += ">\n      <failure message=\"" + detail + "\"/>\n    </testcase>\n";
        break;
      case Outcome::NotSupported:
        xml += ">\n      <skipped message=\"not supported: " + detail + "\"/>\n    </testcase>\n";
        break;
    }
  }
  xml += "  </testsuite>\n</testsuites>\n";
  return xml;
}

}  // namespace vexcap::tool
