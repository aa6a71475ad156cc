#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

class QBitMap;

// A layered picture file of 8 bits a channel. It keeps no pixels: what it renders is decoded from the file's bytes,
// which must outlive it.
class QPSD
{
public:
  static constexpr int MAX_SIZE = 16384;
  struct Channel
  {
    int id; // 0 to 2: red, green, blue; -1: alpha; others aren't painted
    bool packed;
    std::span<const std::byte> data; // a packed one begins with the lengths of its rows
  };
  struct Layer
  {
    int top, left, bottom, right;
    std::string blendMode; // four letters
    int opacity, clipping;
    uint8_t flags; // 2: invisible
    std::string name;
    std::vector<Channel> channels;

    bool IsVisible() const { return !(flags & 2); }
    int64_t Width() const { return int64_t{right} - left; }
    int64_t Height() const { return int64_t{bottom} - top; }
  };

  // False, reported, when it isn't such a file or is damaged; then width and height are 0.
  bool Load(std::span<const std::byte> file);
  int GetWidth() const { return wid; }
  int GetHeight() const { return hgt; }
  const std::vector<Layer>& Layers() const { return layers; }
  // Paints the visible layers, the first one lowest, into a 32-bit picture of its size.
  void Render(QBitMap& picture) const;

private:
  bool LoadSections(std::span<const std::byte> file);
  void RenderLayer(const Layer& layer, QBitMap& picture) const;

  int wid = 0;
  int hgt = 0;
  std::vector<Layer> layers;
};
