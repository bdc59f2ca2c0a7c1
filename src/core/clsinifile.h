#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace fleetwright {

class ProfileDocument;

// Key-level access to a profile file: "[section]" headers and "key=value" lines.
//
//   [fltsim.0]
//   title=Cessna 172 N1234   // one comment
//   texture=blue
//
// Every call behaves as if it went to the file at once: a read sees every change made on disk since the last
// call, by this object or anybody else, and a write leaves the file changed before it returns. Behind that
// the object keeps one parse of the file and serves reads from it while the file is unchanged, so reading
// thousands of values costs one parse.
//
// Section and Key are sticky: they stay as set until set again, and callers rely on that. Nothing here
// reports a failure: a file that cannot be read reads as an empty one, and a write that cannot be done
// (read-only file, missing folder, a folder in the file's place) is lost without a word.
class clsIniFile
{
public:
    clsIniFile();
    ~clsIniFile();
    clsIniFile(const clsIniFile &) = delete;
    clsIniFile &operator=(const clsIniFile &) = delete;

    const std::u16string &path() const { return m_path; }
    void setPath(const std::u16string &path);
    const std::u16string &Key() const { return m_key; }
    void setKey(const std::u16string &key) { m_key = key; }
    const std::u16string &Section() const { return m_section; }
    void setSection(const std::u16string &section);

    // Value of Key in Section; empty when there is none. At most 4095 characters.
    std::u16string Value();
    // Writes Key=value in Section. NULs are cut out of the caller's own string first. An empty string
    // writes "key="; to delete the key pass nullptr, which stands for the null string.
    void setValue(std::u16string &value);
    void setValue(const std::u16string &value);
    void setValue(std::nullptr_t);

    void DeleteKey();
    void DeleteSection();

    // Key names of Section (or section names of the file), each followed by one NUL, cut to 8190
    // characters when the list does not fit.
    std::u16string INISection();
    // Deletes Section, as the write call does with a null key; kept for completeness, nobody calls it.
    void setINISection(const std::u16string &text);
    std::u16string Sections();

    // Fill names with the key names of Section, or with all section names, in file order and spelling.
    // names[0] is the first name; count is the number of names. With nothing to
    // return, names is emptied and count is 0. EnumerateCurrentSection keeps an empty key name (a line
    // "=x"), EnumerateAllSections skips empty names.
    void EnumerateCurrentSection(std::vector<std::u16string> &names, std::int32_t &count);
    void EnumerateAllSections(std::vector<std::u16string> &names, std::int32_t &count);

    // One operation of many calls, such as reading every key of every variation or rewriting them all. The
    // file is looked at once, at the first call inside; reads are served from that state and see the
    // batch's own writes, and the file is written once, when the batch is committed or destroyed, also when
    // an exception ends the run half way. The bytes are those that the same calls one by one would have
    // left. Should the file be changed from outside while a batch runs, its reads do not see the change, but
    // nothing of it is lost: the batch's writes are made again on the file as it then stands. Batches nest;
    // the outermost one writes.
    class Batch
    {
    public:
        explicit Batch(clsIniFile &ini);
        ~Batch();
        Batch(const Batch &) = delete;
        Batch &operator=(const Batch &) = delete;
        void commit();

    private:
        clsIniFile *m_ini;
    };

private:
    ProfileDocument *document();
    void writeEntry(const std::string *key, const std::string *value);
    void flush();
    struct BatchEdit;
    bool rebaseBatch(const std::vector<BatchEdit> &edits);

    std::u16string m_path;
    std::u16string m_key;
    std::u16string m_section;
    std::string m_sectionBytes;     // m_section in the code page, made once for the many reads of a section
    std::int32_t m_writeResult = 0; // the last write's result; nobody reads it

    struct Cache;
    std::unique_ptr<Cache> m_cache;
    int m_batchDepth = 0;
};

} // namespace fleetwright
