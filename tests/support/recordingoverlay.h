#pragma once

#include "geometry/doverlay.h"

#include <string>
#include <vector>

// Keeps what was painted, in order.
class RecordingOverlay : public DOverlay
{
public:
  struct Item
  {
    std::string kind; // "points", "lines", "loop", "triangles", "quads", "text"
    std::vector<DVector3> points;
    DOverlayStyle style;
    std::string text;
  };
  std::vector<Item> items;

  void Points(std::span<const DVector3> p, const DOverlayStyle& s) override { Add("points", p, s); }
  void Lines(std::span<const DVector3> p, const DOverlayStyle& s) override { Add("lines", p, s); }
  void LineLoop(std::span<const DVector3> p, const DOverlayStyle& s) override { Add("loop", p, s); }
  void Triangles(std::span<const DVector3> p, const DOverlayStyle& s) override { Add("triangles", p, s); }
  void Quads(std::span<const DVector3> p, const DOverlayStyle& s) override { Add("quads", p, s); }
  void Text(const DVector3& at, std::string_view text, const DOverlayStyle& s) override
  {
    items.push_back({"text", {at}, s, std::string(text)});
  }

private:
  void Add(const char* kind, std::span<const DVector3> p, const DOverlayStyle& s)
  {
    items.push_back({kind, {p.begin(), p.end()}, s, {}});
  }
};
