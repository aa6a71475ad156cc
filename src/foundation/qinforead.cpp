#include "foundation/qinfo.h"
#include "foundation/qinfotree.h"
#include "foundation/qreport.h"

#include <array>
#include <cstring>

namespace {

constexpr size_t MAX_TEXT = 1023; // of a word, a value, a comment, a reference path

enum ByteClass : uint8_t
{
  SEPARATOR = 1,
  ENDS_WORD = 2
};

constexpr std::array<uint8_t, 256> ByteClasses()
{
  std::array<uint8_t, 256> classes{};
  for (size_t c : {0x0DU, 0x0AU, 0x20U, 0xA0U}) // line ends, blank, hard blank
    classes[c] = SEPARATOR | ENDS_WORD;
  classes['\t'] = SEPARATOR; // a tab stands between words, and can stand inside one
  classes['='] = classes['~'] = ENDS_WORD;
  return classes;
}
constexpr std::array<uint8_t, 256> CLASSES = ByteClasses();

bool Is(char c, ByteClass byteClass)
{
  return CLASSES[static_cast<unsigned char>(c)] & byteClass;
}

class Reader
{
public:
  Reader(QInfoTree& newTree, std::string_view text, const std::string& name, bool stop) :
      tree(newTree), fileName(name), at(text.data()), end(at + text.size()), stopAtBrace(stop),
      hasReturns(text.find('\r') != std::string_view::npos)
  {
    levels[0] = tree.Root();
  }

  void Run()
  {
    while (SkipSeparators()) {
      const bool wasDotted = std::exchange(dotted, false);
      switch (*at) {
      case ';':
        ReadComment();
        break;
      case '{':
        OpenTree();
        break;
      case '}':
        CloseTree();
        if (stopAtBrace)
          return;
        break;
      case '=':
        ReadValue(wasDotted);
        break;
      case '~':
        ReadReference(wasDotted);
        break;
      default:
        ReadWord();
      }
    }
    if (level > 0)
      QERR("QInfo(%s); brackets don't match; still %d closing bracket(s) expected at end of file.", fileName.c_str(),
           level);
  }

private:
  // False at the end of the file.
  bool SkipSeparators()
  {
    for (; at < end && Is(*at, SEPARATOR); ++at)
      line += *at == '\n';
    return at < end;
  }

  // What stands before the line's end, or as much of it as fits. The line's end is consumed, and not counted.
  std::string_view RestOfLine()
  {
    size_t length = std::min(static_cast<size_t>(end - at), MAX_TEXT);
    bool ended = false;
    for (const char c : {'\n', '\r'}) {
      if (c == '\r' && !hasReturns)
        break;
      if (const void* found = std::memchr(at, c, length)) {
        length = static_cast<size_t>(static_cast<const char*>(found) - at);
        ended = true;
      }
    }
    const std::string_view text(at, length);
    at += length + ended;
    return text;
  }

  void ReadComment()
  {
    const std::string_view mark(at++, 1);
    lastNode = tree.Append(levels[Level()], QInfoNode::COMMENT, mark);
    tree.SetText(lastNode, RestOfLine());
  }

  void OpenTree()
  {
    ++at;
    if (!lastWord) {
      QWARN("QInfo: { without groupname");
      return;
    }
    if (level + 1 < QInfo::MAX_LEVEL)
      ++level;
    else
      QWARN("QInfo: '%s' nests too deep (max %d levels)", fileName.c_str(), QInfo::MAX_LEVEL);
    lastWord->type = QInfoNode::TREE;
    levels[Level()] = lastWord;
  }

  void CloseTree()
  {
    ++at;
    if (level > 0)
      --level;
    else
      QERR("QInfo(%s); more '}' brackets than '{' near line %d", fileName.c_str(), line);
  }

  // Behind a word that made no node, the text belongs to nothing; the node before must keep its own.
  void ReadValue(bool belongsToNothing)
  {
    ++at;
    if (belongsToNothing)
      RestOfLine();
    else if (lastNode)
      tree.SetFileValue(lastNode, RestOfLine());
    else
      QWARN("QInfo: assign without symbol in line %d", line);
  }

  void ReadReference(bool belongsToNothing)
  {
    ++at;
    if (belongsToNothing) {
      RestOfLine();
      return;
    }
    if (!lastNode) {
      QWARN("QInfo: reference without symbol in line %d", line);
      return;
    }
    const std::string path(RestOfLine());
    QInfoNode* target = tree.FindNode(path);
    if (!target) {
      QWARN("QInfo(%s): reference (~) to unknown tree '%s' in line %d", fileName.c_str(), path.c_str(), line);
    } else if (!target->FirstChild()) {
      QWARN("QInfo(%s): ref to tree '%s' without child in line %d", fileName.c_str(), path.c_str(), line);
    } else {
      tree.Branch(lastNode).reference = target;
      lastNode->type = QInfoNode::TREE;
    }
  }

  void ReadWord()
  {
    const char* limit = at + std::min(static_cast<size_t>(end - at), MAX_TEXT);
    const char* start = at;
    bool hasDot = false;
    for (; at < limit && !Is(*at, ENDS_WORD); ++at)
      hasDot |= *at == '.';
    const std::string_view word(start, static_cast<size_t>(at - start));
    if (at == end && word.size() < MAX_TEXT)
      return; // a word that the end of the file cuts isn't one
    if (hasDot) {
      QWARN("QInfo(%s): key with '.' found (%s) - won't work; use { } to define subtrees (line %d)", fileName.c_str(),
            std::string(word).c_str(), line);
      dotted = true;
      return;
    }
    lastWord = lastNode = tree.Append(levels[Level()], QInfoNode::KEY, word);
  }

  size_t Level() const { return static_cast<size_t>(level); }

  QInfoTree& tree;
  const std::string& fileName;
  const char* at;
  const char* end;
  bool stopAtBrace;
  bool hasReturns; // most files have none, and then no line needs to be searched for one
  int line = 1;
  int level = 0;
  std::array<QInfoNode*, QInfo::MAX_LEVEL> levels{};
  QInfoNode* lastWord = nullptr;
  QInfoNode* lastNode = nullptr;
  bool dotted = false; // the token before was a word that made no node
};

} // namespace

void QInfoReadText(QInfoTree& tree, std::string_view text, const std::string& fileName, bool stopAtBrace)
{
  Reader(tree, text, fileName, stopAtBrace).Run();
  tree.BuildIndex();
}
