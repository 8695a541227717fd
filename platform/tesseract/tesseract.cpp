#include "platform/tesseract/tesseract.h"

#include <dlfcn.h>
#include <leptonica/allheaders.h>
#include <tesseract/capi.h>
#include <tesseract/version.h>

#include <array>
#include <mutex>
#include <utility>

namespace tarqo::ocr {
namespace {

constexpr const char* kLanguages = "kor+eng";
/// The resolution the images pretend to have, as the library warns about images without one.
constexpr int kPixelsAnInch = 150;

struct LanguageData {
  const char* name;
  const char* package;
};
constexpr std::array<LanguageData, 2> kLanguagePackages = {
    {{"kor", "tesseract-ocr-kor"}, {"eng", "tesseract-ocr-eng"}}};

std::string libraryName() { return "libtesseract.so." + std::to_string(TESSERACT_MAJOR_VERSION); }

std::string trimmed(const std::string& text) {
  const auto* const blanks = " \t\r\n\f\v";
  const std::size_t first = text.find_first_not_of(blanks);
  return first == std::string::npos ? std::string()
                                    : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// A function of the loaded library; null when the library lacks it.
template <typename Function>
void resolve(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(dlsym(library, name));
}

void ignoreMessage(const char* /*message*/) {}

}  // namespace

/// The functions used, by the names they have in the library.
struct Tesseract::Library {
  decltype(::TessBaseAPICreate)* create = nullptr;
  decltype(::TessBaseAPIDelete)* destroy = nullptr;
  decltype(::TessBaseAPISetVariable)* setVariable = nullptr;
  decltype(::TessBaseAPIInit2)* init = nullptr;
  decltype(::TessBaseAPIGetLoadedLanguagesAsVector)* loadedLanguages = nullptr;
  decltype(::TessBaseAPISetPageSegMode)* setLayout = nullptr;
  decltype(::TessBaseAPISetImage)* setImage = nullptr;
  decltype(::TessBaseAPISetSourceResolution)* setResolution = nullptr;
  decltype(::TessBaseAPIRecognize)* recognize = nullptr;
  decltype(::TessBaseAPIGetIterator)* results = nullptr;
  decltype(::TessResultIteratorDelete)* destroyResults = nullptr;
  decltype(::TessResultIteratorNext)* next = nullptr;
  decltype(::TessResultIteratorGetPageIteratorConst)* page = nullptr;
  decltype(::TessResultIteratorGetUTF8Text)* text = nullptr;
  decltype(::TessResultIteratorConfidence)* confidence = nullptr;
  decltype(::TessPageIteratorBoundingBox)* box = nullptr;
  decltype(::TessMonitorCreate)* createMonitor = nullptr;
  decltype(::TessMonitorDelete)* destroyMonitor = nullptr;
  decltype(::TessMonitorSetDeadlineMSecs)* setDeadline = nullptr;
  decltype(::TessDeleteText)* destroyText = nullptr;
  decltype(::TessDeleteTextArray)* destroyTexts = nullptr;

  /// Of Leptonica, which Tesseract works with.
  decltype(::leptSetStderrHandler)* setMessageHandler = nullptr;
  /// Of the OpenMP library, when Tesseract was built with it.
  void (*setParallelLevels)(int) = nullptr;

  /// Null when the library is missing, or lacks a function.
  static std::unique_ptr<const Library> load();

 private:
  [[nodiscard]] bool resolveAll(void* handle);
};

/// One recogniser with its languages.
struct Tesseract::Engine {
  explicit Engine(const Library& l) : library(l), api(l.create()) {
    // First of all, since any other call may print messages. It holds for the whole library, which
    // by now may be reading on another thread.
    static std::once_flag silenced;
    std::call_once(silenced, [this] { library.setVariable(api, "debug_file", "/dev/null"); });
  }
  ~Engine() { library.destroy(api); }
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// Whether every one of the languages was loaded: the library is content with one of them.
  [[nodiscard]] bool load(const std::string& dataFolder, const char* languages, int count) const;
  /// Empty when it takes longer than `limit`.
  [[nodiscard]] std::vector<ReadText> read(const GrayImage& image, TessPageSegMode layout,
                                           std::chrono::milliseconds limit) const;
  [[nodiscard]] std::vector<ReadText> collect(TessPageIteratorLevel level) const;

  const Library& library;
  TessBaseAPI* api;
};

bool Tesseract::Library::resolveAll(void* handle) {
  resolve(handle, "TessBaseAPICreate", create);
  resolve(handle, "TessBaseAPIDelete", destroy);
  resolve(handle, "TessBaseAPISetVariable", setVariable);
  resolve(handle, "TessBaseAPIInit2", init);
  resolve(handle, "TessBaseAPIGetLoadedLanguagesAsVector", loadedLanguages);
  resolve(handle, "TessBaseAPISetPageSegMode", setLayout);
  resolve(handle, "TessBaseAPISetImage", setImage);
  resolve(handle, "TessBaseAPISetSourceResolution", setResolution);
  resolve(handle, "TessBaseAPIRecognize", recognize);
  resolve(handle, "TessBaseAPIGetIterator", results);
  resolve(handle, "TessResultIteratorDelete", destroyResults);
  resolve(handle, "TessResultIteratorNext", next);
  resolve(handle, "TessResultIteratorGetPageIteratorConst", page);
  resolve(handle, "TessResultIteratorGetUTF8Text", text);
  resolve(handle, "TessResultIteratorConfidence", confidence);
  resolve(handle, "TessPageIteratorBoundingBox", box);
  resolve(handle, "TessMonitorCreate", createMonitor);
  resolve(handle, "TessMonitorDelete", destroyMonitor);
  resolve(handle, "TessMonitorSetDeadlineMSecs", setDeadline);
  resolve(handle, "TessDeleteText", destroyText);
  resolve(handle, "TessDeleteTextArray", destroyTexts);
  resolve(handle, "leptSetStderrHandler", setMessageHandler);
  resolve(handle, "omp_set_max_active_levels", setParallelLevels);
  return create != nullptr && destroy != nullptr && setVariable != nullptr && init != nullptr &&
         loadedLanguages != nullptr && setLayout != nullptr && setImage != nullptr &&
         setResolution != nullptr && recognize != nullptr && results != nullptr &&
         destroyResults != nullptr && next != nullptr && page != nullptr && text != nullptr &&
         confidence != nullptr && box != nullptr && createMonitor != nullptr &&
         destroyMonitor != nullptr && setDeadline != nullptr && destroyText != nullptr &&
         destroyTexts != nullptr && setMessageHandler != nullptr;
}

std::unique_ptr<const Tesseract::Library> Tesseract::Library::load() {
  // Never unloaded: OpenMP and the language data leave things behind that point into it.
  void* handle = dlopen(libraryName().c_str(), RTLD_NOW | RTLD_LOCAL);
  auto library = std::make_unique<Library>();
  if (handle == nullptr || !library->resolveAll(handle)) {
    return nullptr;
  }
  library->setMessageHandler(ignoreMessage);
  return library;
}

bool Tesseract::Engine::load(const std::string& dataFolder, const char* languages,
                             int count) const {
  const char* folder = dataFolder.empty() ? nullptr : dataFolder.c_str();
  if (library.init(api, folder, languages, tesseract::OEM_LSTM_ONLY) != 0) {
    return false;
  }
  char** loaded = library.loadedLanguages(api);
  int found = 0;
  while (loaded != nullptr && loaded[found] != nullptr) {
    ++found;
  }
  library.destroyTexts(loaded);
  return found == count;
}

std::vector<ReadText> Tesseract::Engine::read(const GrayImage& image, TessPageSegMode layout,
                                              std::chrono::milliseconds limit) const {
  if (library.setParallelLevels != nullptr) {
    library.setParallelLevels(0);  // Holds for the calling thread alone.
  }
  library.setLayout(api, layout);
  library.setImage(api, image.bytes.data(), image.widthPx, image.heightPx, 1, image.widthPx);
  library.setResolution(api, kPixelsAnInch);
  const std::unique_ptr<ETEXT_DESC, decltype(library.destroyMonitor)> monitor(
      library.createMonitor(), library.destroyMonitor);
  library.setDeadline(monitor.get(), static_cast<int>(limit.count()));
  return library.recognize(api, monitor.get()) == 0 ? collect(tesseract::RIL_TEXTLINE)
                                                    : std::vector<ReadText>();
}

std::vector<ReadText> Tesseract::Engine::collect(TessPageIteratorLevel level) const {
  std::vector<ReadText> found;
  TessResultIterator* results = library.results(api);
  if (results == nullptr) {
    return found;  // Nothing was read.
  }
  do {
    char* text = library.text(results, level);
    ReadText read;
    read.text = trimmed(text != nullptr ? text : "");
    library.destroyText(text);
    PixelBox& box = read.box;
    if (!read.text.empty() && library.box(library.page(results), level, &box.left, &box.top,
                                          &box.right, &box.bottom) != 0) {
      read.confidence = library.confidence(results, level);
      found.push_back(std::move(read));
    }
  } while (library.next(results, level) != 0);
  library.destroyResults(results);
  return found;
}

Tesseract::Tesseract(std::string dataFolder) : dataFolder_(std::move(dataFolder)) {}

Tesseract::~Tesseract() = default;

std::optional<std::string> Tesseract::prepare() {
  if (both_ != nullptr) {
    return std::nullopt;
  }
  if (library_ == nullptr) {
    library_ = Library::load();
  }
  if (library_ == nullptr) {
    return "Text in pictures cannot be read: the library " + libraryName() +
           " is missing. Install the package \"libtesseract" +
           std::to_string(TESSERACT_MAJOR_VERSION) + "\" and observe again.";
  }
  auto engine = std::make_unique<Engine>(*library_);
  if (!engine->load(dataFolder_, kLanguages, kLanguagePackages.size())) {
    return whatIsMissing();
  }
  both_ = std::move(engine);
  return std::nullopt;
}

std::string Tesseract::whatIsMissing() const {
  std::string packages;
  for (const LanguageData& language : kLanguagePackages) {
    if (!Engine(*library_).load(dataFolder_, language.name, 1)) {
      packages += std::string(packages.empty() ? "package" : " and the package") + " \"" +
                  language.package + "\"";
    }
  }
  return packages.empty()
             ? "Text in pictures cannot be read: Tesseract did not start."
             : "Text in pictures cannot be read: language data of Tesseract is missing. Install "
               "the " +
                   packages + " and observe again.";
}

/// The recogniser of a language, made when first needed; null when that fails.
const Tesseract::Engine* Tesseract::engineFor(Language language) {
  if (language == Language::koreanAndEnglish) {
    return both_.get();
  }
  const bool isKorean = language == Language::korean;
  std::unique_ptr<const Engine>& engine = isKorean ? korean_ : english_;
  if (engine == nullptr) {
    auto made = std::make_unique<Engine>(*library_);
    if (made->load(dataFolder_, isKorean ? "kor" : "eng", 1)) {
      engine = std::move(made);
    }
  }
  return engine.get();
}

std::vector<ReadText> Tesseract::readLine(const GrayImage& image, Language language,
                                          std::chrono::milliseconds limit) {
  const Engine* engine = engineFor(language);
  return engine != nullptr ? engine->read(image, tesseract::PSM_SINGLE_LINE, limit)
                           : std::vector<ReadText>();
}

std::vector<ReadText> Tesseract::lastWords() const { return both_->collect(tesseract::RIL_WORD); }

std::vector<ReadText> Tesseract::readScattered(const GrayImage& image,
                                               std::chrono::milliseconds limit) {
  return both_->read(image, tesseract::PSM_SPARSE_TEXT, limit);
}

}  // namespace tarqo::ocr
