#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

// A JSON value being built; objects keep the order in which their members were added.
// A float is printed so that reading it back gives the same 32 bits; infinities and NaN are the strings "inf", "-inf",
// "nan". A text that isn't valid UTF-8 is taken as Latin-1 as a whole.
class ToolJson
{
public:
  ToolJson(); // null
  ToolJson(bool value);
  ToolJson(int value);
  ToolJson(unsigned value);
  ToolJson(long value);
  ToolJson(unsigned long value);
  ToolJson(float value);
  ToolJson(double value) = delete; // the system's numbers are floats
  ToolJson(const char* text);
  ToolJson(std::string_view text);
  ToolJson(const std::string& text);
  ToolJson(const void*) = delete; // a pointer isn't a bool
  ~ToolJson();
  ToolJson(ToolJson&& other) noexcept;
  ToolJson& operator=(ToolJson&& other) noexcept;

  static ToolJson Object();
  static ToolJson Array();
  // Long arrays at once.
  static ToolJson Floats(std::span<const float> values);
  static ToolJson Ints(std::span<const int> values);
  static ToolJson Ints(std::span<const uint32_t> values);
  static ToolJson Ints(std::span<const uint16_t> values);

  // To an object, to an array.
  ToolJson& Add(std::string_view key, ToolJson value) &;
  ToolJson& Add(ToolJson value) &;
  ToolJson&& Add(std::string_view key, ToolJson member) && { return std::move(Add(key, std::move(member))); }
  ToolJson&& Add(ToolJson member) && { return std::move(Add(std::move(member))); }

  std::string Text() const;
  // On stdout, with a line feed.
  void Print() const;

private:
  struct Value;
  std::unique_ptr<Value> value; // never null but after a move
};
