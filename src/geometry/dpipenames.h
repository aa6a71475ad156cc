#pragma once

#include <epoxy/gl.h>

// What the pipe keeps of OpenGL's state: the number, and the word that reports use. The place in a table is the index
// in the pipe's own arrays.

struct DPipeName
{
  GLenum name;
  const char* text;
};
#define PIPE_NAME(name)                                                                                                \
  DPipeName                                                                                                            \
  {                                                                                                                    \
    name, #name                                                                                                        \
  }

inline constexpr DPipeName PIPE_CAPS[] = {
    PIPE_NAME(GL_BLEND),        PIPE_NAME(GL_DEPTH_TEST),
    PIPE_NAME(GL_CULL_FACE),    PIPE_NAME(GL_ALPHA_TEST),
    PIPE_NAME(GL_LIGHTING),     PIPE_NAME(GL_FOG),
    PIPE_NAME(GL_NORMALIZE),    PIPE_NAME(GL_POLYGON_OFFSET_FILL),
    PIPE_NAME(GL_SCISSOR_TEST), PIPE_NAME(GL_SAMPLE_ALPHA_TO_COVERAGE),
    PIPE_NAME(GL_STENCIL_TEST), PIPE_NAME(GL_COLOR_MATERIAL),
    PIPE_NAME(GL_LINE_SMOOTH),  PIPE_NAME(GL_LIGHT0),
};
// The first three are targets that a texture is selected for.
inline constexpr DPipeName PIPE_UNIT_CAPS[] = {
    PIPE_NAME(GL_TEXTURE_2D),    PIPE_NAME(GL_TEXTURE_3D),    PIPE_NAME(GL_TEXTURE_CUBE_MAP),
    PIPE_NAME(GL_TEXTURE_GEN_S), PIPE_NAME(GL_TEXTURE_GEN_T), PIPE_NAME(GL_TEXTURE_GEN_R),
    PIPE_NAME(GL_TEXTURE_GEN_Q),
};
inline constexpr DPipeName PIPE_BINDINGS[] = {
    PIPE_NAME(GL_TEXTURE_BINDING_2D),
    PIPE_NAME(GL_TEXTURE_BINDING_3D),
    PIPE_NAME(GL_TEXTURE_BINDING_CUBE_MAP),
};
// Behind these comes the tangent array, which is an attribute of the vertex.
inline constexpr DPipeName PIPE_ARRAYS[] = {
    PIPE_NAME(GL_VERTEX_ARRAY),
    PIPE_NAME(GL_NORMAL_ARRAY),
    PIPE_NAME(GL_COLOR_ARRAY),
    PIPE_NAME(GL_INDEX_ARRAY),
};

#undef PIPE_NAME
