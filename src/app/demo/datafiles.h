#pragma once

#include <string>

// Writes the pictures of the data root: data/images with the identity of colour grading and the fade to black, images
// with what stands in for a missing texture. False, reported, when one can't be written.
[[nodiscard]] bool DemoWriteData(const std::string& root);
