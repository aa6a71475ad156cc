#include "support/reportcapture.h"

#include <algorithm>

ReportCapture::ReportCapture() : before(std::move(QReports().tap))
{
  QReports().tap = [this](std::string_view severity, std::string_view text, std::string_view context) {
    entries.push_back({std::string(severity), std::string(text), std::string(context)});
    return true;
  };
}

ReportCapture::~ReportCapture()
{
  QReports().tap = std::move(before);
}

int ReportCapture::Count(std::string_view text) const
{
  return static_cast<int>(std::count_if(entries.begin(), entries.end(),
                                        [&](const Entry& e) { return e.text.find(text) != std::string::npos; }));
}

int ReportCapture::Problems() const
{
  return static_cast<int>(std::count_if(entries.begin(), entries.end(), [](const Entry& e) {
    return e.severity == "WARN" || e.severity == "ERR" || e.severity == "CRIT" || e.severity == "FATAL";
  }));
}

std::string ReportCapture::All() const
{
  std::string all;
  for (const Entry& e : entries)
    all += e.severity + ": " + e.text + (e.text.ends_with('\n') ? "" : "\n");
  return all;
}
