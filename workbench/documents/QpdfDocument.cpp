#include "documents/QpdfDocument.h"

#include "documents/AnnotationDictionary.h"
#include "documents/AnnotationSyntax.h"
#include "documents/DeepStructures.h"
#include "documents/FileReplacement.h"
#include "documents/InputFile.h"
#include "documents/PdfText.h"
#include "documents/Records.h"

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFLogger.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <qpdf/QUtil.hh>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <new>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

namespace Documents {

namespace {

namespace fs = std::filesystem;

using Dictionary = std::map<std::string, QPDFObjectHandle>;

constexpr std::size_t kMostWarnings = 100;

const std::string kAnnots = "/Annots";
const std::string kContents = "/Contents";
const std::string kModified = "/M";

// Number and generation of an indirect object in one.
std::uint64_t KeyOf(const QPDFObjectHandle& object)
{
    const QPDFObjGen id = object.getObjGen();
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(id.getObj())) << 32 |
           static_cast<std::uint32_t>(id.getGen());
}

// One pass over a dictionary's entries; asking QPDF for each key by name costs more than that, and
// most for keys that are not there.
class AnnotationReader {
public:
    explicit AnnotationReader(QPDFObjectHandle& dictionary) : entries_{dictionary.getDictAsMap()} {}

    AnnotationProperties Read()
    {
        AnnotationProperties properties;
        for (auto& [key, value] : entries_) {
            ReadEntry(key, value, properties);
        }
        return properties;
    }

    // Identity of the indirect object that an entry refers to; 0 when it refers to none.
    std::uint64_t Reference(const std::string& key) const
    {
        const auto found = entries_.find(key);
        return found != entries_.end() && found->second.isIndirect() ? KeyOf(found->second) : 0;
    }

private:
    static void ReadEntry(const std::string& key, QPDFObjectHandle& value,
                          AnnotationProperties& properties)
    {
        std::string text;
        if (key == kContents) {
            ReadText(value, properties.contents);
        } else if (key == "/T") {
            ReadText(value, properties.title);
        } else if (key == "/Subj") {
            ReadText(value, properties.subject);
        } else if (key == "/CreationDate") {
            ReadDate(value, properties.created);
        } else if (key == kModified) {
            ReadDate(value, properties.modified);
        } else if (key == "/AP") {
            properties.hasAppearance = value.isDictionary() && value.hasKey("/N");
        } else if (key == "/Rect") {
            properties.rect = ReadRect(value);
        } else if (key == "/Subtype" && value.getValueAsName(text)) {
            properties.subtype = text.substr(1);
        } else if (long long flags = 0; key == "/F" && value.getValueAsInt(flags)) {
            properties.flags = static_cast<std::uint32_t>(flags);
        }
    }

    static void ReadText(QPDFObjectHandle& value, std::u16string& text)
    {
        if (std::string bytes; value.getValueAsString(bytes)) {
            text = DecodeTextString(bytes);
        }
    }

    static void ReadDate(QPDFObjectHandle& value, _PDDateRec& date)
    {
        if (std::string bytes; value.getValueAsString(bytes)) {
            date = DecodeDate(bytes);
        }
    }

    static std::optional<_PDRect> ReadRect(QPDFObjectHandle& value)
    {
        if (!value.isArray() || value.getArrayNItems() < 4) {
            return std::nullopt;
        }
        std::array<double, 4> numbers{};
        for (int item = 0; item < 4; ++item) {
            double& number = numbers[static_cast<std::size_t>(item)];
            if (!value.getArrayItem(item).getValueAsNumber(number) || !std::isfinite(number)) {
                return std::nullopt;
            }
        }
        return _PDRect{numbers[0], numbers[1], numbers[2], numbers[3]};
    }

    Dictionary entries_;
};

struct Permissions {
    bool readOnly = false;
    bool deletion = true;
};

// What the encryption lets a reader do who did not give the owner's password.
Permissions PermissionsOf(QPDF& file)
{
    if (!file.isEncrypted() || file.ownerPasswordMatched()) {
        return {};
    }
    const bool annotations = file.allowModifyAnnotation();
    const bool anything = annotations || file.allowModifyForm() || file.allowModifyAssembly() ||
                          file.allowModifyOther();
    return {!anything, annotations};
}

class OpenedFile final : public QpdfDocument {
public:
    // Throws QPDFExc and other standard exceptions.
    OpenedFile(std::string bytes, const std::string& description, std::string name,
               const OpenOptions& options)
        : QpdfDocument{std::move(name), options.listAll},
          bytes_{std::move(bytes)},
          forListing_{options.forListing}
    {
        if (forListing_) {
            RefuseEdits("it was opened to be listed only");
        }
        OpenWithPassword(description, options.password);
        if (!file_->getRoot().getKey("/Pages").isDictionary()) {
            throw std::runtime_error("it has no page tree");
        }
        CheckPageTree(*file_);
        const std::vector<QPDFObjectHandle>& pages = file_->getAllPages();
        SetPages(std::vector<Page>(pages.size()));
        if (forListing_) {
            std::transform(pages.begin(), pages.end(),
                           std::inserter(pageObjects_, pageObjects_.end()), KeyOf);
        }
        encrypted_ = file_->isEncrypted();
        TakeWarnings();
    }

    bool Encrypted() const noexcept override { return encrypted_; }

    void ApplyPermissions(bool writeProtected)
    {
        const Permissions permissions = PermissionsOf(*file_);
        SetPermissions(permissions.readOnly || writeProtected, permissions.deletion);
    }

    std::vector<std::string> Warnings() const override
    {
        const std::lock_guard lock{warningsMutex_};
        return warnings_;
    }

private:
    // Passwords come as UTF-8; files before PDF 2.0 were made with other encodings of the same
    // letters, so those are tried too.
    void OpenWithPassword(const std::string& description, const std::string& password)
    {
        std::vector<std::string> spellings{password};
        if (std::any_of(password.begin(), password.end(),
                        [](char c) { return static_cast<unsigned char>(c) >= 0x80; })) {
            for (std::string& spelling : QUtil::possible_repaired_encodings(password)) {
                spellings.push_back(std::move(spelling));
            }
        }
        for (std::size_t attempt = 0;; ++attempt) {
            file_ = MakeQuietFile();
            try {
                file_->processInputSource(MakeStackSavingSource(description, bytes_),
                                          spellings[attempt].c_str());
                return;
            } catch (const QPDFExc& error) {
                if (error.getErrorCode() != qpdf_e_password || attempt + 1 == spellings.size()) {
                    throw;
                }
            }
        }
    }

    static std::unique_ptr<QPDF> MakeQuietFile()
    {
        auto file = std::make_unique<QPDF>();
        const auto logger = QPDFLogger::create();
        logger->setInfo(logger->discard());
        logger->setWarn(logger->discard());
        logger->setError(logger->discard());
        file->setLogger(logger);
        file->setSuppressWarnings(true);
        return file;
    }

    void Warn(std::string line)
    {
        const std::lock_guard lock{warningsMutex_};
        if (warnings_.size() < kMostWarnings) {
            std::replace_if(
                line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
            warnings_.push_back(std::move(line));
        } else if (warnings_.size() == kMostWarnings) {
            warnings_.push_back(Name() + ": further warnings are left out");
        }
    }

    void TakeWarnings()
    {
        if (file_->anyWarnings()) {
            for (const QPDFExc& warning : file_->getWarnings()) {
                Warn(warning.what());
            }
        }
    }

    QPDFObjectHandle PageObject(std::uint32_t page) { return file_->getAllPages().at(page); }

    // --- Reading ---

    // What an annotation's dictionary says of the pop-up that belongs to it.
    struct PopupLink {
        _PDAnnotRec* annotation;
        std::uint64_t popup;   // from /Popup
        std::uint64_t parent;  // from /Parent
    };

    PageRef ReadPage(std::uint32_t page) override
    {
        std::vector<AnnotationRef> annotations;
        std::vector<PopupLink> links;
        try {
            QPDFObjectHandle object = PageObject(page);
            QPDFObjectHandle array =
                object.isDictionary() ? object.getKey(kAnnots) : QPDFObjectHandle::newNull();
            const int count = array.isArray() ? array.getArrayNItems() : 0;
            annotations.reserve(static_cast<std::size_t>(count));
            for (int item = 0; item < count; ++item) {
                annotations.push_back(ReadAnnotation(array.getArrayItem(item), links));
            }
        } catch (const std::exception& error) {
            Warn(Name() + ": the annotations of page " + std::to_string(page) +
                 " cannot be read: " + error.what());
        }
        LinkPopups(links);
        TakeWarnings();
        return MakePageRecord(std::move(annotations));
    }

    AnnotationRef ReadAnnotation(QPDFObjectHandle object, std::vector<PopupLink>& links)
    {
        try {
            if (!object.isIndirect()) {
                return object.isDictionary() ? MakeRecord(object, links) : AnnotationRef{};
            }
            const std::uint64_t key = KeyOf(object);
            AnnotationRef record = RecordOf(key);
            if (!record && object.isDictionary()) {
                record = MakeRecord(object, links);
                records_.emplace(key, record);
                LetGo(object, key);
            }
            return record;
        } catch (const std::exception& error) {
            Warn(Name() + ": an annotation cannot be read: " + error.what());
            return {};
        }
    }

    // Where nothing is edited, QPDF's object of an annotation, which takes several times the memory
    // of the record, is needed no more. Damaged files have pages among the annotations.
    void LetGo(const QPDFObjectHandle& annotation, std::uint64_t key)
    {
        if (forListing_ && !pageObjects_.contains(key)) {
            file_->replaceObject(annotation.getObjGen(), QPDFObjectHandle::newNull());
        }
    }

    AnnotationRef MakeRecord(QPDFObjectHandle& dictionary, std::vector<PopupLink>& links)
    {
        AnnotationReader reader{dictionary};
        AnnotationRef record = MakeAnnotationRecord(reader.Read(), ListAll());
        const std::uint64_t popup = reader.Reference("/Popup");
        const std::uint64_t parent = reader.Reference("/Parent");
        if (popup != 0 || parent != 0) {
            links.push_back({record.Get(), popup, parent});
        }
        return record;
    }

    AnnotationRef RecordOf(std::uint64_t key) const
    {
        const auto found = records_.find(key);
        return found == records_.end() ? AnnotationRef{} : found->second;
    }

    // An annotation names its pop-up, and a pop-up its parent; files exist with only one of both.
    void LinkPopups(const std::vector<PopupLink>& links)
    {
        for (const PopupLink& link : links) {
            LinkPopup(*link.annotation, RecordOf(link.popup));
        }
        for (const PopupLink& link : links) {
            if (const AnnotationRef parent = RecordOf(link.parent)) {
                LinkPopup(*parent.Get(), AnnotationRef::Retain(link.annotation));
            }
        }
    }

    _PDRect ReadPageBox(std::uint32_t page) override
    {
        constexpr _PDRect kLetter{0, 0, 612, 792};
        try {
            QPDFObjectHandle box = QPDFPageObjectHelper{PageObject(page)}.getCropBox();
            if (!box.isRectangle()) {
                return kLetter;
            }
            const auto corners = box.getArrayAsRectangle();
            const bool hasArea = corners.urx > corners.llx && corners.ury > corners.lly;
            return hasArea ? _PDRect{corners.llx, corners.lly, corners.urx, corners.ury} : kLetter;
        } catch (const std::exception&) {
            return kLetter;
        }
    }

    // --- Writing ---

    // A number beyond those of all objects, and at a distance that references which lead nowhere
    // are not likely to reach.
    std::int64_t FirstFreeObject() const
    {
        constexpr std::int64_t kDistance = 1'000'000;
        const auto table = file_->getXRefTable();
        return kDistance + (table.empty() ? 0 : table.rbegin()->first.getObj());
    }

    // QPDF's own way to a new object first reads every object of the file, which takes seconds for
    // a big one. QPDF may have made objects of its own since, so a number in use is passed over.
    // The file gets other numbers when it is written.
    QPDFObjectHandle MakeIndirect(const QPDFObjectHandle& object)
    {
        if (nextObject_ == 0) {
            nextObject_ = FirstFreeObject();
        }
        for (;; ++nextObject_) {
            if (nextObject_ > std::numeric_limits<int>::max()) {
                throw std::runtime_error("the file has no object number left");
            }
            const QPDFObjGen id{static_cast<int>(nextObject_), 0};
            if (file_->getObject(id).isNull()) {
                file_->replaceObject(id, object);
                return file_->getObject(id);
            }
        }
    }

    // A page that can be changed: the page tree may refer to objects that are missing.
    QPDFObjectHandle SoundPageObject(std::uint32_t page)
    {
        QPDFObjectHandle object = PageObject(page);
        if (!object.isDictionary()) {
            throw std::runtime_error("page " + std::to_string(page) +
                                     " is damaged and cannot be changed");
        }
        return object;
    }

    // A page's /Annots made its own: pages may share an indirect array, and an edit concerns one
    // page. The former value comes back when the edit is taken back.
    struct OwnArray {
        void Install() { page.replaceKey(kAnnots, array); }
        void Restore() { page.replaceKey(kAnnots, former); }

        QPDFObjectHandle page;
        QPDFObjectHandle former;  // null: none
        QPDFObjectHandle array;
    };

    OwnArray PrepareOwnArray(std::uint32_t page)
    {
        QPDFObjectHandle object = SoundPageObject(page);
        QPDFObjectHandle array = object.getKey(kAnnots);
        OwnArray own{object, array, array};
        if (!array.isArray()) {
            own.array = QPDFObjectHandle::newArray();
        } else if (array.isIndirect() && !ownArrays_.contains(KeyOf(array))) {
            own.array = MakeIndirect(array.shallowCopy());
            ownArrays_.insert(KeyOf(own.array));
        }
        return own;
    }

    PreparedEdit PrepareAdded(std::uint32_t page, const AnnotationProperties& properties,
                              _PDAnnotRec* annotation) override
    {
        OwnArray own = PrepareOwnArray(page);
        QPDFObjectHandle dictionary = MakeIndirect(MakeAnnotationDictionary(properties));
        dictionary.replaceKey("/P", own.page);
        records_[KeyOf(dictionary)] = AnnotationRef::Retain(annotation);
        withoutAppearance_.emplace_back(dictionary, properties);
        return {[own, dictionary]() mutable {
                    own.array.appendItem(dictionary);
                    own.Install();
                },
                [own]() mutable {
                    own.array.eraseItem(own.array.getArrayNItems() - 1);
                    own.Restore();
                }};
    }

    PreparedEdit PrepareContents(std::uint32_t page, std::uint32_t position,
                                 std::u16string_view contents,
                                 const std::optional<_PDDateRec>& time) override
    {
        const int item = static_cast<int>(position);
        QPDFObjectHandle dictionary = PageObject(page).getKey(kAnnots).getArrayItem(item);
        std::optional<OwnArray> own;
        if (!dictionary.isIndirect()) {
            own = PrepareOwnArray(page);
            dictionary = own->array.getArrayItem(item);
        }
        Dictionary former{{kContents, dictionary.getKey(kContents)}};
        Dictionary changed{{kContents, QPDFObjectHandle::newString(EncodeTextString(contents))}};
        if (time) {
            former[kModified] = dictionary.getKey(kModified);
            changed[kModified] = QPDFObjectHandle::newString(EncodeDate(*time));
        }
        // These show the former contents, and viewers prefer them to the plain text.
        std::vector<std::string> outdated{"/RC"};
        if (dictionary.getKey("/Subtype").isNameAndEquals("/FreeText")) {
            outdated.emplace_back("/AP");
        }
        for (const std::string& key : outdated) {
            former[key] = dictionary.getKey(key);
            changed[key] = QPDFObjectHandle::newNull();
        }
        return {[own, dictionary, changed]() mutable {
                    ReplaceEntries(dictionary, changed);
                    if (own) {
                        own->Install();
                    }
                },
                [own, dictionary, former]() mutable {
                    ReplaceEntries(dictionary, former);
                    if (own) {
                        own->Restore();
                    }
                }};
    }

    // A null value removes the entry.
    static void ReplaceEntries(QPDFObjectHandle& dictionary, const Dictionary& entries)
    {
        for (const auto& [key, value] : entries) {
            dictionary.replaceKey(key, value);
        }
    }

    PreparedEdit PrepareRemoved(std::uint32_t page,
                                const std::vector<std::uint32_t>& positions) override
    {
        OwnArray own = PrepareOwnArray(page);
        std::vector<std::pair<int, QPDFObjectHandle>> removed;
        for (const std::uint32_t position : positions) {
            const int item = static_cast<int>(position);
            removed.emplace_back(item, own.array.getArrayItem(item));
        }
        return {[own, removed]() mutable {
                    for (auto item = removed.rbegin(); item != removed.rend(); ++item) {
                        own.array.eraseItem(item->first);
                    }
                    own.Install();
                },
                [own, removed]() mutable {
                    for (const auto& [item, annotation] : removed) {
                        own.array.insertItem(item, annotation);
                    }
                    own.Restore();
                }};
    }

    void InsertPageObject(const QPDFObjectHandle& object, std::uint32_t at)
    {
        if (at < file_->getAllPages().size()) {
            file_->addPageAt(object, true, PageObject(at));
        } else {
            file_->addPage(object, false);
        }
    }

    // The tree of pages becomes a flat one with the first of these edits, and every page gets the
    // entries that it inherited; a page object that was taken out is whole by itself.
    void MovePageObject(const QPDFObjectHandle& object, std::uint32_t to)
    {
        file_->removePage(object);
        InsertPageObject(object, to);
    }

    PreparedEdit PreparePageInserted(std::uint32_t at, const _PDRect& box) override
    {
        auto dictionary = QPDFObjectHandle::newDictionary();
        dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/Page"));
        dictionary.replaceKey("/MediaBox", MakeRectangle(box));
        dictionary.replaceKey("/Resources", QPDFObjectHandle::newDictionary());
        const QPDFObjectHandle object = MakeIndirect(dictionary);
        return {[this, object, at] { InsertPageObject(object, at); },
                [this, object] { file_->removePage(object); }};
    }

    PreparedEdit PreparePageDeleted(std::uint32_t page) override
    {
        const QPDFObjectHandle object = PageObject(page);
        return {[this, object] { file_->removePage(object); },
                [this, object, page] { InsertPageObject(object, page); }};
    }

    PreparedEdit PreparePageMoved(std::uint32_t from, std::uint32_t to) override
    {
        const QPDFObjectHandle object = SoundPageObject(from);
        return {[this, object, to] { MovePageObject(object, to); },
                [this, object, from] { MovePageObject(object, from); }};
    }

    // Streams are copied as they are, so that nothing depends on filters that QPDF knows.
    void SetUp(QPDFWriter& writer)
    {
        for (const auto& [dictionary, properties] : withoutAppearance_) {
            AddAppearance(*file_, dictionary, properties);
        }
        withoutAppearance_.clear();
        writer.setCompressStreams(false);
        writer.setDecodeLevel(qpdf_dl_none);
    }

    void WriteFile(const fs::path& path) override
    {
        QPDFWriter writer{*file_};
        SetUp(writer);
        writer.setPreserveEncryption(true);
        ReplaceFile(path, writer);
        TakeWarnings();
    }

    std::string FileBytes(Encryption encryption, const std::function<bool()>& goesOn) override
    {
        QPDFWriter writer{*file_};
        SetUp(writer);
        if (goesOn) {
            writer.registerProgressReporter(
                std::make_shared<QPDFWriter::FunctionProgressReporter>([&goesOn](int /*percent*/) {
                    if (!goesOn()) {
                        throw std::runtime_error("writing was stopped");
                    }
                }));
        }
        writer.setPreserveEncryption(encryption == Encryption::kKept);
        writer.setOutputMemory();
        writer.write();
        TakeWarnings();
        const auto buffer = writer.getBufferSharedPointer();
        return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
    }

    const std::string bytes_;  // read by file_ for as long as it lives
    const bool forListing_;
    std::unique_ptr<QPDF> file_;
    std::unordered_set<std::uint64_t> pageObjects_;  // filled for a listing only

    std::unordered_map<std::uint64_t, AnnotationRef> records_;  // by indirect object
    std::unordered_set<std::uint64_t> ownArrays_;
    std::int64_t nextObject_ = 0;  // 0 before the first new object
    bool encrypted_ = false;

    // Added since the file was written last. Appearances are streams, and those only QPDF's own way
    // makes.
    std::vector<std::pair<QPDFObjectHandle, AnnotationProperties>> withoutAppearance_;

    mutable std::mutex warningsMutex_;
    std::vector<std::string> warnings_;
};

OpenResult Failure(OpenFailure kind, const std::string& name, const std::string& reason)
{
    std::string message = name + ": " + reason;
    std::replace_if(
        message.begin(), message.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return {nullptr, kind, std::move(message)};
}

OpenResult OpenFile(std::string bytes, const std::string& description, std::string name,
                    const OpenOptions& options, bool writeProtected)
{
    try {
        auto document =
            std::make_shared<OpenedFile>(std::move(bytes), description, std::move(name), options);
        document->ApplyPermissions(writeProtected);
        return {std::move(document), OpenFailure::kNone, {}};
    } catch (const TooDeep& error) {
        return Failure(OpenFailure::kDamaged, description, error.what());
    } catch (const QPDFExc& error) {
        if (error.getErrorCode() == qpdf_e_password) {
            return Failure(OpenFailure::kPassword, description,
                           options.password.empty() ? "needs a password" : "the password is wrong");
        }
        return Failure(OpenFailure::kDamaged, description,
                       "no PDF file, or damaged beyond repair (" + error.getMessageDetail() + ")");
    } catch (const std::exception& error) {
        return Failure(OpenFailure::kDamaged, description,
                       std::string{"no PDF file, or damaged beyond repair ("} + error.what() + ")");
    }
}

}  // namespace

OpenResult QpdfDocument::Open(const fs::path& path, const OpenOptions& options)
{
    InputFile file;
    try {
        file = ReadInputFile(path);
    } catch (const std::bad_alloc&) {
        return Failure(OpenFailure::kUnreadable, path.string(),
                       "cannot be read: not enough memory");
    } catch (const std::exception& error) {
        return Failure(OpenFailure::kUnreadable, path.string(),
                       std::string{"cannot be read: "} + error.what());
    }
    return OpenFile(std::move(file.bytes), path.string(), path.filename().string(), options,
                    file.isWriteProtected);
}

OpenResult QpdfDocument::OpenBytes(std::string bytes, std::string name, const OpenOptions& options)
{
    const std::string description = name;
    return OpenFile(std::move(bytes), description, std::move(name), options, false);
}

}  // namespace Documents
