// What a file is: a picture or one of the tool's own formats, which carry no mark of their own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace norv {

enum class FileKind { picture, matrix, floatImage, bitImage, net, trainingSet };

// The kind in words.
const char* NameOf(FileKind kind);

// The kind that the name's extension says: .mat, .fdib, .bit, .net or .dat; none for other names.
std::optional<FileKind> KindOfName(const std::string& path);
std::optional<FileKind> KindOfExtension(const std::string& extension);

struct FileFacts {
  FileKind kind;
  int64_t size;      // bytes that the file has
  int64_t expected;  // bytes that its header asks for; a picture's own size
  bool Truncated() const { return size < expected; }
};

// By the name's extension (.mat, .fdib, .bit, .net, .dat), else by contents: a picture's mark, or the one format of
// ours whose header agrees with the file's size to the byte. Throws a Failure for a file that cannot be opened, that is
// nothing known, or whose header makes no sense.
FileFacts RecogniseFile(const std::string& path);

// RecogniseFile, and a Failure when the file ends early: what loaders would fill with zeros is no input for people.
FileKind RecogniseWholeFile(const std::string& path);

}  // namespace norv
