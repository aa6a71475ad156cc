#pragma once

#include <cstdint>
#include <span>
#include <vector>

// A block's chunk, found the slow and obvious way.
inline std::vector<uint8_t> PlainArchiveChunk(std::span<const uint8_t> block)
{
  std::vector<int> table(4096, 65535);
  std::vector<uint8_t> out{0x40, 0, 0};
  size_t wordAt = 1, items = 0;
  unsigned word = 0;
  const auto byte = [&](size_t at) { return at < block.size() ? unsigned{block[at]} : 0u; };
  const auto store = [&] {
    out[wordAt] = static_cast<uint8_t>(word >> 8);
    out[wordAt + 1] = static_cast<uint8_t>(word);
  };
  for (size_t p = 0; p < block.size();) {
    if (items == 16) {
      store();
      wordAt = out.size();
      out.insert(out.end(), {0, 0});
      items = word = 0;
    }
    ++items;
    word *= 2;
    size_t run = 1;
    while (run < 4095 && p + run < block.size() && block[p + run] == block[p])
      ++run;
    if (run >= 16) {
      word |= 1;
      out.insert(out.end(), {0, static_cast<uint8_t>((run - 16) >> 8), static_cast<uint8_t>(run - 16), block[p]});
      p += run;
      continue;
    }
    const unsigned h = (((byte(p) * 16 ^ byte(p + 1)) * 16 ^ byte(p + 2)) * 40543u >> 4) & 0xFFF;
    const auto c = static_cast<size_t>(table[h]);
    table[h] = static_cast<int>(p);
    size_t length = 0;
    if (c != 65535 && p - c < 4096)
      while (length < 18 && p + length < block.size() && block[c + length] == block[p + length])
        ++length;
    if (length >= 3) {
      word |= 1;
      const size_t code = (p - c) * 16 - 3 + length;
      out.insert(out.end(), {static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code)});
      p += length;
    } else {
      out.push_back(block[p++]);
    }
  }
  word <<= 16 - items;
  store();
  if (out.size() <= block.size())
    return out;
  out.assign({0x80});
  out.insert(out.end(), block.begin(), block.end());
  return out;
}
