#pragma once

#include <memory>
#include <string>
#include <string_view>

class DShader;
class DTexture;
class QInfo;
struct DShaderLayer;

// Fills a shader from its tree "shader_NAME" in a configuration tree. What is wrong in it is reported and gets its
// default: a shader never keeps the scenery from being drawn.
class DShaderLoader
{
public:
  // path: the shader's key path, as of DShaderKeyPath, for pictures beside the file. loadMaps off: textures stay null.
  // False, with the shader untouched, when the tree's name doesn't begin with "shader_".
  static bool Parse(const QInfo& info, const std::string& treeName, DShader& shader, std::string_view path = {},
                    bool loadMaps = true);
  // A shader that is a text by itself: not read yet, which is reported. False.
  static bool Parse(std::string_view text);
};
