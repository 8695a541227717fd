#include "tests/transcripts/collection.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tarqo::transcripts {
namespace {

const std::filesystem::path kFolder = TARQO_TRANSCRIPTS;
const std::filesystem::path kScenes = kFolder / "scenes";

std::vector<std::string> stemsIn(const std::filesystem::path& folder, const char* extension) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == extension && entry.path().filename() != "CMakeLists.txt") {
      names.push_back(entry.path().stem().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

std::vector<std::string> transcriptNames() { return stemsIn(kFolder, ".txt"); }

Transcript transcriptNamed(const std::string& name) {
  return parseTranscript(readFile((kFolder / (name + ".txt")).string()));
}

std::vector<std::string> sceneNames() { return stemsIn(kScenes, ".json"); }

std::string scenePath(const std::string& name) { return (kScenes / (name + ".json")).string(); }

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tarqo::transcripts
