#pragma once

#include "foundation/qreport.h"

#include <cstdio>
#include <cstdlib>

// What must hold whatever the input; also in builds without assertions.
inline void FuzzCheck(bool holds, const char* what)
{
  if (holds)
    return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}
#define FUZZ_CHECK(condition) FuzzCheck(condition, #condition)

// Bad input is reported a lot; nobody reads that here.
class QuietReports
{
public:
  QuietReports() : before(std::move(QReports().tap))
  {
    QReports().tap = [](std::string_view, std::string_view, std::string_view) { return true; };
  }
  ~QuietReports() { QReports().tap = std::move(before); }
  QuietReports(const QuietReports&) = delete;
  QuietReports& operator=(const QuietReports&) = delete;

private:
  decltype(QReportSettings::tap) before;
};
