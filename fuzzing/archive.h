#pragma once

#include "foundation/qarchivecoder.h"
#include "fuzzing/check.h"

#include <algorithm>
#include <memory>
#include <string_view>

// Any bytes as a chunk: refused, or decoded within the limits. The same bytes as a block come back from their chunk.
inline void FuzzArchive(std::string_view input)
{
  static const auto decoder = std::make_unique<QArchiveDecoder>();
  static const auto encoder = std::make_unique<QArchiveEncoder>();
  const std::span bytes(reinterpret_cast<const uint8_t*>(input.data()), input.size());
  if (decoder->Decode(bytes) == QArchiveDecoder::Result::GOOD)
    FUZZ_CHECK(decoder->Bytes().size() <= QARCHIVE_MAX_CHUNK);
  else
    FUZZ_CHECK(decoder->Bytes().empty());
  const auto block = bytes.first(std::min(bytes.size(), QARCHIVE_BLOCK));
  if (block.empty())
    return;
  FUZZ_CHECK(decoder->Decode(encoder->Encode(block)) == QArchiveDecoder::Result::GOOD);
  FUZZ_CHECK(std::equal(block.begin(), block.end(), decoder->Bytes().begin(), decoder->Bytes().end()));
}
