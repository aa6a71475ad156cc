// Models out of VRML 2.0 files: no scene is built, the keywords of shapes and materials are picked out.

#include "foundation/qnumber.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dreadfile.h"
#include "geometry/dvrml.h"

#include <algorithm>
#include <span>

bool DVrmlReader::Read(std::string& token)
{
  token.clear();
  in.SkipBlanks();
  if (in.Left() == 0)
    return false;
  const char* from = in.Position();
  const std::string_view rest(from, in.Left());
  if (rest[0] == ',') {
    in.Seek(from + 1);
    return true;
  }
  // A "]" that begins a word belongs to it.
  const size_t length = std::min({rest.find_first_of(", \n\r\t"), rest.find(']', 1), rest.size(), MAX_TOKEN});
  token = rest.substr(0, length);
  in.Seek(from + length);
  return true;
}

bool DVrmlReader::Next(std::string& token)
{
  while (Read(token)) {
    if (token != "DEF")
      return true;
    if (!Read(token))
      return false;
  }
  return false;
}

float DVrmlReader::Float()
{
  std::string token;
  return Next(token) ? QParseFloat(token) : 0;
}

template <typename Each>
void DVrmlReader::EachInList(Each each)
{
  std::string_view rest(in.Position(), in.Left());
  const size_t open = noMoreLists ? std::string_view::npos : rest.find('[');
  noMoreLists = open == std::string_view::npos;
  if (noMoreLists)
    return;
  const char* at = in.Position() + open + 1;
  rest = rest.substr(open + 1);
  const size_t close = std::min(rest.find(']'), rest.size());
  if (close == rest.size())
    QDBG("EOF\n");
  for (size_t i = 0; i < close;) {
    const size_t from = rest.find_first_not_of(", \n\r\t", i);
    if (from >= close)
      break;
    const size_t to = std::min(rest.find_first_of(", \n\r\t", from), close);
    each(rest.substr(from, to - from));
    i = to;
  }
  in.Seek(at + std::min(close + 1, rest.size()));
}

std::vector<float> DVrmlReader::Numbers()
{
  std::vector<float> numbers;
  EachInList([&](std::string_view word) { numbers.push_back(DTextReader(word).Float()); });
  return numbers;
}

std::vector<uint16_t> DVrmlReader::Indices()
{
  std::vector<uint16_t> indices;
  EachInList([&](std::string_view word) { indices.push_back(static_cast<uint16_t>(DTextReader(word).Int())); });
  return indices;
}

std::vector<uint16_t> DGV_TriangulateArray(const std::vector<uint16_t>& indices)
{
  constexpr uint16_t END = 65535;
  std::vector<uint16_t> triangles;
  for (auto first = indices.begin(); first != indices.end();) {
    const auto last = std::find(first, indices.end(), END);
    const auto corners = last - first;
    if (corners < 3)
      QWARN("DGeobImportVRML; non-3/4/6/8/16-sided polygon found (%d sides)", static_cast<int>(corners));
    for (auto corner = first + 1; corners >= 3 && corner + 1 != last; ++corner)
      triangles.insert(triangles.end(), {*first, *corner, corner[1]});
    first = last == indices.end() ? last : last + 1;
  }
  return triangles;
}

namespace {

// Entry i of a list of numbers, the first for an index outside, zero for none.
template <typename V>
V Entry(std::span<const float> list, size_t i)
{
  constexpr auto N = static_cast<size_t>(V::length());
  V value(0.0f);
  const size_t at = (i + 1) * N <= list.size() ? i * N : 0;
  for (size_t c = 0; c < N && N <= list.size(); ++c)
    value[static_cast<int>(c)] = list[at + c];
  return value;
}

template <typename V>
void Fill(DArray<V>& array, std::span<const float> list, const std::vector<uint16_t>& corners)
{
  for (size_t i = 0; i < std::min(array.size(), corners.size()); ++i)
    array[i] = Entry<V>(list, corners[i]);
}

} // namespace

bool DGeob::ImportVRML(DVrmlReader& in)
{
  std::vector<float> coordinates, normals, textureCoordinates;
  const char* before = in.Position();
  for (std::string token; in.Next(token); before = in.Position()) {
    if (token == "Shape") {
      in.Seek(before);
      break;
    }
    if (token == "coord") {
      coordinates = in.Numbers();
    } else if (token == "normal") {
      normals = in.Numbers();
    } else if (token == "texCoord") {
      textureCoordinates = in.Numbers();
    } else if (token == "coordIndex") {
      const auto corners = DGV_TriangulateArray(in.Indices());
      vertex.assign(corners.size(), DVector3(0.0f));
      normal.assign(corners.size(), DVector3(0.0f));
      texCoord[0].assign(corners.size(), DVector2(0.0f));
      index.resize(corners.size());
      for (size_t i = 0; i < corners.size(); ++i)
        index[i] = static_cast<uint16_t>(i);
      Fill(vertex, coordinates, corners);
      if (corners.size() > MAX_VERTICES)
        QERR("DGeob:ImportVRML; %d indices, but only %d can be named", static_cast<int>(corners.size()), MAX_VERTICES);
    } else if (token == "normalIndex") {
      Fill(normal, normals, DGV_TriangulateArray(in.Indices()));
    } else if (token == "texCoordIndex") {
      const auto corners = DGV_TriangulateArray(in.Indices());
      if (corners.size() != index.size()) {
        QERR("DGeob:ImportVRML; #texcoords (%d)!= #indices (%d)", static_cast<int>(corners.size()), IndexCount());
        return false;
      }
      Fill(texCoord[0], textureCoordinates, corners);
    }
  }
  AddBurst({.start = 0, .count = 3 * IndexCount(), .mtlID = -1});
  return true;
}

bool DGeode::ImportVRML(const std::string& fileName)
{
  QDBG("ImportVRML(%s)\n", fileName.c_str());
  DArray<std::byte> content;
  return DReadFile(fileName, content) &&
         ImportVRMLText(std::string_view(reinterpret_cast<const char*>(content.data()), content.size()));
}

namespace {

DVector4 Color(DVrmlReader& in)
{
  const float r = in.Float();
  const float g = in.Float();
  const float b = in.Float();
  return {r, g, b, 1.0f};
}

void ReadMaterial(DMaterial& m, DVrmlReader& in, std::string_view keyword, const DGeode& owner)
{
  if (keyword == "url") {
    m.AddBitMap(owner.FindMapFile(in.PlainToken()), false, &owner);
  } else if (keyword == "ambientIntensity") {
    m.emission = DVector4(DVector3(in.Float()), 1.0f);
  } else if (keyword == "diffuseColor") {
    m.diffuse = Color(in);
  } else if (keyword == "specularColor") {
    m.specular = Color(in);
  } else if (keyword == "shininess") {
    m.shininess = in.Float() * 128;
  } else if (keyword == "transparency") {
    m.diffuse.a = m.transparency = in.Float();
  }
}

} // namespace

bool DGeode::ImportVRMLText(std::string_view text)
{
  Clear();
  DVrmlReader in(text);
  DMaterial* current = nullptr;
  for (std::string token; in.Next(token);) {
    if (token == "geometry") {
      if (GetNoofGeobs() >= MAX_GEOBS) {
        QERR("Too many shapes in VRML, max=%d", MAX_GEOBS);
        return true;
      }
      DGeob& shape = *AddGeob();
      if (!shape.ImportVRML(in))
        return false;
      shape.materialRef = shape.burst[0].mtlID = GetNoofMaterials() - 1;
      if (current && current->texture.empty())
        current->AddBitMap(FindMapFile("stub.tga"), false, this);
    } else if (token == "material") {
      static_cast<void>(in.PlainToken());
      if (GetNoofMaterials() >= MAX_MATERIALS) {
        QERR("Too many materials in VRML, max=%d", MAX_MATERIALS);
        return true;
      }
      current = AddMaterial();
    } else if (current) {
      ReadMaterial(*current, in, token, *this);
    }
  }
  return true;
}
