#include "foundation/qdate.h"

#include <array>
#include <cstdio>

namespace {

const char* FormatFields(const char* format, const std::tm& fields)
{
  static std::string result;
  std::array<char, 256> text;
  const size_t length = std::strftime(text.data(), text.size(), format ? format : "", &fields);
  result = length > 0 ? std::string(text.data(), length) : "<QDate bad fmt>";
  return result.c_str();
}

} // namespace

QDate::QDate()
{
  SetTime(std::time(nullptr));
}

void QDate::SetTime(std::time_t moment)
{
  localtime_r(&moment, &fields);
}

std::time_t QDate::GetTime() const
{
  std::tm copy = fields;
  copy.tm_isdst = -1;
  return std::mktime(&copy);
}

const char* QDate::Format(const char* format) const
{
  return FormatFields(format, fields);
}

const char* QDate::FormatWebLog() const
{
  const std::time_t moment = GetTime();
  std::tm universal{};
  gmtime_r(&moment, &universal);
  return FormatFields("[%d/%b/%Y:%H:%M:%S +0000]", universal);
}

bool QDate::Read(const char* text)
{
  std::tm read{};
  int rest = 0;
  const int count = std::sscanf(text ? text : "", "%2d-%2d-%4d%n/%2d:%2d:%2d", &read.tm_mday, &read.tm_mon,
                                &read.tm_year, &rest, &read.tm_hour, &read.tm_min, &read.tm_sec);
  const bool inside = read.tm_mday >= 1 && read.tm_mday <= 31 && read.tm_mon >= 1 && read.tm_mon <= 12 &&
                      read.tm_year >= 0 && read.tm_hour <= 23 && read.tm_min <= 59 && read.tm_sec <= 60;
  if ((count != 6 && !(count == 3 && text[rest] == 0)) || !inside)
    return false;
  read.tm_mon -= 1;
  read.tm_year += read.tm_year < 100 ? 100 : -1900;
  read.tm_isdst = -1;
  const std::time_t moment = std::mktime(&read);
  if (moment == -1)
    return false;
  SetTime(moment);
  return true;
}
