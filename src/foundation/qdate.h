#pragma once

#include "foundation/qobject.h"

#include <ctime>
#include <string>

// A moment of calendar time, in the local time zone.
class QDate : public QObject
{
public:
  QDate(); // now
  explicit QDate(std::time_t moment) { SetTime(moment); }
  const char* GetClassName() const override { return "QDate"; }

  void SetTime(std::time_t moment);
  std::time_t GetTime() const;
  // A template of strftime; "<QDate bad fmt>" for one that gives nothing. The next call of any of these overwrites what
  // the pointer shows.
  const char* Format(const char* format = "%d-%m-%y/%H:%M:%S") const;
  const char* FormatDate(const char* format = "%d-%m-%Y") const { return Format(format); }
  const char* FormatWebLog() const; // "[%d/%b/%Y:%H:%M:%S +0000]", in universal time
  // "day-month-year" with, perhaps, "/hour:minute:second" behind; a two-digit year counts from 2000. False, with
  // nothing changed, when the text isn't of that form.
  bool Read(const char* text);

  int GetDay() const { return fields.tm_mday; }         // 1..31
  int GetMonth() const { return fields.tm_mon + 1; }    // 1..12
  int GetYear() const { return fields.tm_year + 1900; } // four digits
  int GetHour() const { return fields.tm_hour; }
  int GetMinute() const { return fields.tm_min; }
  int GetSecond() const { return fields.tm_sec; }
  int GetWeekDay() const { return fields.tm_wday; } // 0 is Sunday

private:
  std::tm fields{};
};
