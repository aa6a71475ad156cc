#pragma once

#include "geometry/dblock.h"

#include <cstddef>
#include <string>

// The content of a file on the disk, or of a member of an open archive, in one read. The memory is of the kind that the
// arrays of the model take over afterwards. False when there is no such file.
bool DReadFile(const std::string& path, DArray<std::byte>& content);
