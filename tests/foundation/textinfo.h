#pragma once

#include "foundation/qinfo.h"

#include <string>
#include <string_view>

// A tree read from text. Its changes go nowhere.
struct TextInfo : QInfo
{
  explicit TextInfo(std::string_view text, uint32_t more = 0) : QInfo("text.ini", more | NO_READ)
  {
    ReadFromText(text);
  }
  ~TextInfo() override { MarkWritten(); }
  std::string Get(std::string_view path) const
  {
    std::string value;
    return GetString(path, value, "-") ? "[" + value + "]" : value;
  }
};
