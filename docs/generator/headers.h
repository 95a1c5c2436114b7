// Reads the public headers: what they declare and the comments that document it.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace docs {

struct Parameter {
  std::string type, name;
};

struct Declaration {
  std::string name;    // of the function or type; of an unnamed enumeration empty
  std::string text;    // as it stands in the header
  std::string binary;  // what callers were compiled against: types of result and parameters, or the layout of a record
  bool function = false;
  bool exported = false;  // a function of the library, not one that is compiled into its callers
  bool returnsStatus = false;
  std::vector<Parameter> parameters;
  std::string comment;  // the one right above, or of the group where a whole group shares one
  std::string group;    // the comment of the group
};

// A header in the order of its lines.
struct Piece {
  enum Kind { heading, comment, declarations } kind;
  std::string text;  // heading or comment
  std::vector<Declaration> declared;
};

struct Header {
  std::string file;   // "arith.h"
  std::string title;  // first line of its first comment
  std::string about;  // the rest of it
  std::vector<Piece> pieces;
};

// Throws where a header is written in a way that this reader does not know.
Header readHeader(const std::string& path);

// "name = meaning" for every function, record, type and enumerator.
std::map<std::string, std::string> binaryInterface(const std::vector<Header>& headers);

std::string readFile(const std::string& path);
std::vector<std::string> splitLines(const std::string& text);

}  // namespace docs
