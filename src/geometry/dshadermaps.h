#pragma once

#include "geometry/dtextureptr.h"

#include <string>
#include <string_view>

class DShader;
struct DShaderLayer;

// The texture of a layer's map: a file, the six of a cube ("sky*.tga"), or one of the scene's ("$mirror"). A file that
// can't be loaded gives the stub and is reported. Null for a texture of the scene that can't be had (reported).
// keyPath and infoFile are where else the file is looked for: beside the shader's key, beside the shader's file.
DTexturePtr DLoadShaderMap(const DShader& shader, const DShaderLayer& layer, std::string_view keyPath,
                           const std::string& infoFile);
