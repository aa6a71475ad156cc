#pragma once

#include "foundation/qreport.h"

#include <string>
#include <string_view>
#include <vector>

// Stands in for the console and the log while it lives, then puts back what stood before.
class ReportCapture
{
public:
  ReportCapture();
  ~ReportCapture();
  ReportCapture(const ReportCapture&) = delete;
  ReportCapture& operator=(const ReportCapture&) = delete;

  struct Entry
  {
    std::string severity; // "WARN", "ERR", "LOG", "DBG", "INFO", "FATAL"
    std::string text;
    std::string context;
  };
  const std::vector<Entry>& Entries() const { return entries; }
  // A report whose text holds this.
  bool Contains(std::string_view text) const { return Count(text) > 0; }
  int Count(std::string_view text) const;
  // Warnings and worse.
  int Problems() const;
  void Clear() { entries.clear(); }
  // All texts, a line each; for failure messages.
  std::string All() const;

private:
  std::vector<Entry> entries;
  decltype(QReportSettings::tap) before;
};
