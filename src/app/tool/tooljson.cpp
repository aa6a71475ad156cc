#include "app/tool/tooljson.h"

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace {

// Floats of 32 bits, so that the shortest text that reads back is chosen for them.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, int64_t, uint64_t, float>;

// Bytes of the sequence that starts here; 0 when it isn't one of UTF-8.
size_t Utf8Length(std::string_view text)
{
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(i < text.size() ? text[i] : 0); };
  const auto follows = [&](size_t i, int low = 0x80, int high = 0xBF) { return byte(i) >= low && byte(i) <= high; };
  const int first = byte(0);
  if (first < 0x80)
    return 1;
  if (first >= 0xC2 && first <= 0xDF)
    return follows(1) ? 2 : 0;
  if (first >= 0xE0 && first <= 0xEF) // neither overlong forms nor surrogates
    return follows(1, first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF) && follows(2) ? 3 : 0;
  if (first >= 0xF0 && first <= 0xF4)
    return follows(1, first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF) && follows(2) && follows(3) ? 4 : 0;
  return 0;
}

bool IsUtf8(std::string_view text)
{
  while (!text.empty()) {
    const size_t length = Utf8Length(text);
    if (length == 0)
      return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string ToUtf8(std::string_view text)
{
  if (IsUtf8(text))
    return std::string(text);
  std::string result;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x80)
      result += static_cast<char>(0xC0 | code >> 6);
    result += code >= 0x80 ? static_cast<char>(0x80 | (code & 0x3F)) : c;
  }
  return result;
}

Json FromFloat(float value)
{
  if (std::isnan(value))
    return "nan";
  if (std::isinf(value))
    return value < 0 ? "-inf" : "inf";
  return value;
}

template <typename T>
Json FromArray(std::span<const T> values)
{
  Json array = Json::array();
  for (const T v : values)
    array.push_back(v);
  return array;
}

} // namespace

struct ToolJson::Value
{
  Json json;
};

ToolJson::ToolJson() : value(std::make_unique<Value>())
{}
ToolJson::ToolJson(bool v) : value(new Value{v})
{}
ToolJson::ToolJson(int v) : value(new Value{v})
{}
ToolJson::ToolJson(unsigned v) : value(new Value{v})
{}
ToolJson::ToolJson(long v) : value(new Value{v})
{}
ToolJson::ToolJson(unsigned long v) : value(new Value{v})
{}
ToolJson::ToolJson(float v) : value(new Value{FromFloat(v)})
{}
ToolJson::ToolJson(std::string_view text) : value(new Value{ToUtf8(text)})
{}
ToolJson::ToolJson(const char* text) : ToolJson(std::string_view(text ? text : ""))
{}
ToolJson::ToolJson(const std::string& text) : ToolJson(std::string_view(text))
{}
ToolJson::~ToolJson() = default;
ToolJson::ToolJson(ToolJson&& other) noexcept = default;
ToolJson& ToolJson::operator=(ToolJson&& other) noexcept = default;

ToolJson ToolJson::Object()
{
  ToolJson object;
  object.value->json = Json::object();
  return object;
}

ToolJson ToolJson::Array()
{
  ToolJson array;
  array.value->json = Json::array();
  return array;
}

ToolJson ToolJson::Floats(std::span<const float> values)
{
  ToolJson array = Array();
  for (const float v : values)
    array.value->json.push_back(FromFloat(v));
  return array;
}

ToolJson ToolJson::Ints(std::span<const int> values)
{
  ToolJson array;
  array.value->json = FromArray(values);
  return array;
}

ToolJson ToolJson::Ints(std::span<const uint32_t> values)
{
  ToolJson array;
  array.value->json = FromArray(values);
  return array;
}

ToolJson ToolJson::Ints(std::span<const uint16_t> values)
{
  ToolJson array;
  array.value->json = FromArray(values);
  return array;
}

ToolJson& ToolJson::Add(std::string_view key, ToolJson member) &
{
  value->json.push_back({ToUtf8(key), std::move(member.value->json)});
  return *this;
}

ToolJson& ToolJson::Add(ToolJson member) &
{
  value->json.push_back(std::move(member.value->json));
  return *this;
}

std::string ToolJson::Text() const
{
  return value->json.dump();
}

void ToolJson::Print() const
{
  const std::string text = Text() + "\n";
  std::fwrite(text.data(), 1, text.size(), stdout);
}
