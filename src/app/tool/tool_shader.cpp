#include "app/tool/tool.h"
#include "app/tool/tooljson.h"

#include "foundation/qinfo.h"
#include "geometry/dshader.h"
#include "geometry/dshaderloader.h"

namespace {

ToolJson ColorJson(const DVector4& c)
{
  return ToolJson::Floats(std::span(&c.x, 4));
}

ToolJson LayerJson(const DShaderLayer& layer)
{
  return ToolJson::Object()
      .Add("map", layer.mapName)
      .Add("flags", layer.flags)
      .Add("blendSrc", layer.blendSrc)
      .Add("blendDst", layer.blendDst)
      .Add("depthFunc", layer.depthFunc)
      .Add("alphaFunc", layer.alphaFunc)
      .Add("alphaRef", layer.alphaRef)
      .Add("diffuse", ColorJson(layer.diffuse))
      .Add("ambient", ColorJson(layer.ambient))
      .Add("specular", ColorJson(layer.specular))
      .Add("emission", ColorJson(layer.emission))
      .Add("shininess", layer.shininess)
      .Add("reflect", layer.reflect);
}

int RunDump(const ToolArgs& args)
{
  const QInfo info(args.Path(0), QInfo::NO_OPEN_WARNING);
  if (!info.IsRead() || info.IsUnreadable())
    return ToolFail("can't read %s", args.Text(0).c_str());
  ToolJson list = ToolJson::Array();
  for (const QInfoNode* node = info.Root()->FirstChild(); node; node = node->Next()) {
    if (node->type != QInfoNode::TREE || !node->Name().starts_with("shader_"))
      continue;
    const std::string tree(node->Name());
    DShader shader;
    shader.name = tree.substr(7);
    DShaderLoader::Parse(info, tree, shader, {}, false);
    ToolJson layers = ToolJson::Array();
    for (const DShaderLayer& layer : shader.layer)
      layers.Add(LayerJson(layer));
    list.Add(ToolJson::Object()
                 .Add("name", shader.name)
                 .Add("shaderFlags", shader.shaderFlags)
                 .Add("sortKey", shader.sortKey)
                 .Add("layers", std::move(layers)));
  }
  list.Print();
  return TOOL_DONE;
}

} // namespace

std::vector<ToolVerb> ToolShaderVerbs()
{
  return {{"shader", "dump", "The shaders of a .shd file as JSON, textures not loaded", {{"FILE"}}, RunDump}};
}
