// The machine-readable outputs: JSON documents that a JSON reader takes back as written, and the
// compliance report as JSON and as JUnit XML.
#include <gtest/gtest.h>

#include <limits>

#include "check_report.h"
#include "json_value.h"
#include "tool_error.h"
#include "support/json.h"

namespace vexcap::tool {
namespace {

using vexcap::testing::Json;

TEST(ReportTest, JsonValuesReadBackAsWritten) {
  JsonValue document = JsonValue::object();
  document.set("text", "quote \" backslash \\ line\nend \x01 caf\xc3\xa9");
  document.set("count", std::uint64_t{18446744073709551615u});
  document.set("negative", std::int64_t{-5});
  document.set("ratio", 29.97);
  document.set("nothing", JsonValue());
  document.set("not finite", std::numeric_limits<double>::infinity());
  document.set("flag", false);
  JsonValue list = JsonValue::array();
  list.push(1).push("two").push(JsonValue::object()).push(JsonValue::array());
  document.set("list", list);
  document.set("count", 7);  // replaces, keeping the place

  const std::string text = document.dump();
  EXPECT_LT(text.find("\"text\""), text.find("\"count\""));
  const Json parsed = Json::parse(text);
  EXPECT_EQ(parsed["text"].string(), "quote \" backslash \\ line\nend \x01 caf\xc3\xa9");
  EXPECT_EQ(parsed["count"].number(), 7);
  EXPECT_EQ(parsed["negative"].number(), -5);
  EXPECT_EQ(parsed["ratio"].number(), 29.97);
  EXPECT_TRUE(parsed["nothing"].is_null());
  EXPECT_TRUE(parsed["not finite"].is_null());
  EXPECT_FALSE(parsed["flag"].boolean());
  ASSERT_EQ(parsed["list"].items().size(), 4u);
  EXPECT_EQ(parsed["list"].items()[1].string(), "two");
  EXPECT_EQ(parsed["list"].items()[2].kind(), Json::Kind::Object);
}

CheckReport three_outcomes() {
  CheckReport report(false);
  report.record("camera present", {Outcome::Pass, "Virtual Face Camera"}, 0.25);
  report.record("mode 1 infrared: format code 3", {Outcome::Fail, "no frame within 5 s <of> \"start\" & more"}, 5);
  report.record("mode 0 colour: get property 21", {Outcome::NotSupported, "answered VEXCAP_E_FAIL"}, 0);
  report.run("mode 0 colour: a check that throws", []() -> Verdict { throw ToolError("vexcap_x failed"); });
  return report;
}

TEST(ReportTest, TheCheckReportAsJsonCountsEveryOutcome) {
  const CheckReport report = three_outcomes();
  EXPECT_EQ(report.exit_code(), 1);
  const Json parsed = Json::parse(report.json());
  EXPECT_EQ(parsed["passed"].number(), 1);
  EXPECT_EQ(parsed["failed"].number(), 2);
  EXPECT_EQ(parsed["not_supported"].number(), 1);
  EXPECT_FALSE(parsed["interrupted"].boolean());
  ASSERT_EQ(parsed["checks"].items().size(), 4u);
  const Json& failed = parsed["checks"].items()[1];
  EXPECT_EQ(failed["name"].string(), "mode 1 infrared: format code 3");
  EXPECT_EQ(failed["outcome"].string(), "fail");
  EXPECT_EQ(failed["seconds"].number(), 5);
  EXPECT_EQ(parsed["checks"].items()[2]["outcome"].string(), "not supported");
  EXPECT_EQ(parsed["checks"].items()[3]["detail"].string(), "vexcap_x failed");
}

TEST(ReportTest, TheCheckReportAsJUnitHasACasePerCheck) {
  const std::string xml = three_outcomes().junit_xml();
  EXPECT_EQ(xml.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n", 0), 0u) << xml;
  EXPECT_NE(xml.find("<testsuite name=\"vexcap-capture check\" tests=\"4\" failures=\"2\" errors=\"0\" "
                     "skipped=\"1\" time=\"5.250\">"),
            std::string::npos)
      << xml;
  EXPECT_NE(xml.find("<testcase classname=\"camera\" name=\"camera present\" time=\"0.250\">"), std::string::npos);
  EXPECT_NE(xml.find("<testcase classname=\"mode 1 infrared\" name=\"format code 3\" time=\"5.000\">\n"
                     "      <failure message=\"no frame within 5 s &lt;of&gt; &quot;start&quot; &amp; more\"/>"),
            std::string::npos)
      << xml;
  EXPECT_NE(xml.find("<skipped message=\"not supported: answered VEXCAP_E_FAIL\"/>"), std::string::npos);
  EXPECT_NE(xml.find("</testsuite>\n</testsuites>\n"), std::string::npos);
  std::size_t cases = 0;
  for (std::size_t at = xml.find("<testcase "); at != std::string::npos; at = xml.find("<testcase ", at + 1)) ++cases;
  EXPECT_EQ(cases, 4u);
}

}  // namespace
}  // namespace vexcap::tool
