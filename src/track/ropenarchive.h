#pragma once

#include "foundation/qarchive.h"

#include <memory>
#include <string>

// An archive whose members are there as files while this lives. Without the file, or when it isn't an archive
// (reported), nothing is opened.
class ROpenArchive
{
public:
  explicit ROpenArchive(const std::string& path);
  ~ROpenArchive();
  ROpenArchive(const ROpenArchive&) = delete;
  ROpenArchive& operator=(const ROpenArchive&) = delete;
  bool IsOpen() const { return archive != nullptr; }

private:
  std::unique_ptr<QArchive> archive;
};
