#pragma once

#include <memory>
#include <span>
#include <string>

class RTrackNode;
class RTrackVRML;

// A starting point for a track's shader file: the standard templates, then an entry for each material of the nodes,
// once a name. A material without a texture is a comment, as often as it occurs.
std::string MakeShaderTemplate(std::span<const std::unique_ptr<RTrackNode>> nodes);
// "data/tracks/<track>/track_template.shd".
std::string RShaderTemplatePath(const RTrackVRML& track);
// The text above into that file. False when it can't be written; the caller reports.
[[nodiscard]] bool RWriteShaderTemplate(const RTrackVRML& track);
