#include "core/XmlBytes.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <strings.h>
#include <sys/stat.h>
#include <zip.h>

#include "Base/GCException.h"

namespace genapi {

namespace {

struct ZipErrorEnd {
    void operator()(zip_error_t* error) const { zip_error_fini(error); }
};
struct ArchiveEnd {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct ZippedFileEnd {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
struct FileEnd {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// The index of the file that counts; -1 for an archive without files.
zip_int64_t chooseFile(zip_t* archive) {
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    zip_int64_t first = -1;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* name = zip_get_name(archive, static_cast<zip_uint64_t>(i), 0);
        const std::size_t length = name != nullptr ? std::strlen(name) : 0;
        if (length == 0 || name[length - 1] == '/')
            continue;
        if (first < 0)
            first = i;
        if (length > 4 && ::strcasecmp(name + length - 4, ".xml") == 0)
            return i;
    }
    return first;
}

std::string unzip(const std::string& bytes) {
    zip_error_t error;
    zip_error_init(&error);
    const std::unique_ptr<zip_error_t, ZipErrorEnd> errorEnd(&error);
    zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
    if (source == nullptr)
        throw RUNTIME_EXCEPTION("the zipped XML can't be read: %s", zip_error_strerror(&error));
    const std::unique_ptr<zip_t, ArchiveEnd> archive(zip_open_from_source(source, ZIP_RDONLY, &error));
    if (!archive) {
        zip_source_free(source);
        throw RUNTIME_EXCEPTION("the zipped XML can't be read: %s", zip_error_strerror(&error));
    }
    const zip_int64_t index = chooseFile(archive.get());
    zip_stat_t stat;
    if (index < 0 || zip_stat_index(archive.get(), static_cast<zip_uint64_t>(index), 0, &stat) != 0 ||
        (stat.valid & ZIP_STAT_SIZE) == 0)
        throw RUNTIME_EXCEPTION("the zipped XML holds no file");
    if (stat.size > maxXmlBytes)
        throw RUNTIME_EXCEPTION("the zipped XML claims %llu bytes, more than the %zu that are read",
                                static_cast<unsigned long long>(stat.size), maxXmlBytes);
    const std::unique_ptr<zip_file_t, ZippedFileEnd> file(
        zip_fopen_index(archive.get(), static_cast<zip_uint64_t>(index), 0));
    if (!file)
        throw RUNTIME_EXCEPTION("the zipped XML can't be read: %s", zip_strerror(archive.get()));
    std::string text(static_cast<std::size_t>(stat.size), '\0');
    const zip_int64_t length = zip_fread(file.get(), text.data(), text.size());
    if (length != static_cast<zip_int64_t>(text.size()))
        throw RUNTIME_EXCEPTION("the zipped XML is damaged: %s",
                                length < 0 ? zip_error_strerror(zip_file_get_error(file.get()))
                                           : "it ends too early");
    char beyond = 0; // reading behind the end is what makes the library compare the check sum
    if (zip_fread(file.get(), &beyond, 1) != 0)
        throw RUNTIME_EXCEPTION("the zipped XML is damaged: %s",
                                zip_error_strerror(zip_file_get_error(file.get())));
    return text;
}

} // namespace

std::string readFile(const std::string& path) {
    const std::unique_ptr<std::FILE, FileEnd> file(std::fopen(path.c_str(), "rbe"));
    struct stat status {};
    if (!file || ::fstat(::fileno(file.get()), &status) != 0)
        throw RUNTIME_EXCEPTION("the XML file '%s' can't be opened: %s", path.c_str(), std::strerror(errno));
    if (!S_ISREG(status.st_mode) || static_cast<std::size_t>(status.st_size) > maxXmlBytes)
        throw RUNTIME_EXCEPTION("the XML file '%s' is no file of at most %zu bytes", path.c_str(),
                                maxXmlBytes);
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        throw RUNTIME_EXCEPTION("the XML file '%s' can't be read", path.c_str());
    return bytes;
}

std::string unpack(GenApi_3_0::EContentType_t type, std::string bytes) {
    if (bytes.size() > maxXmlBytes)
        throw RUNTIME_EXCEPTION("an XML of %zu bytes is more than the %zu that are read", bytes.size(),
                                maxXmlBytes);
    return type == GenApi_3_0::ContentType_ZippedXml ? unzip(bytes) : std::move(bytes);
}

} // namespace genapi
