// Plays the host towards a plug-in: prepares the record of a selector, calls xImportEntry, and hands back
// result and record. Each record lies in memory of exactly the size that the host's generation has, and bytes
// written outside it are noted as a violation of the Host. The typed calls may be made from several threads;
// setRecordFill may not.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/records.h"
#include "host/selectors.h"
#include "simhost/guarded_record.h"
#include "simhost/host.h"
#include "simhost/plugin.h"
#include "simhost/record_names.h"

namespace simhost {

struct SubTypeName {
    std::uint32_t code = 0;
    std::u16string name;   ///< up to its terminator
    std::string nameUtf8;  ///<
};

struct SubTypeNames {
    std::int32_t result = 0;
    bool delivered = false;        ///< the plug-in stored the address of a live block
    std::uint32_t blockBytes = 0;  ///<
    std::vector<SubTypeName> names;
};

class Importer {
 public:
    /// Both must outlive the Importer.
    Importer(Host& host, const Plugin& plugin) noexcept : m_host(&host), m_plugin(&plugin) {}

    Host& host() const noexcept { return *m_host; }
    const Plugin& plugin() const noexcept { return *m_plugin; }

    /// The byte that records are filled with before the host sets its own fields. 0, as the host does, by
    /// default.
    void setRecordFill(std::uint8_t fill) noexcept { m_fill = fill; }
    std::uint8_t recordFill() const noexcept { return m_fill; }

    /// Any selector with any parameters. The standard parameter record is destroyed right after the call.
    std::int32_t call(std::int32_t selector, void* param1, void* param2) const;
    /// The same with a number as first parameter.
    std::int32_t callWithNumber(std::int32_t selector, std::uint64_t param1, void* param2) const;

    Answer<host::imImportInfoRec> init() const;
    std::int32_t shutdown() const;
    std::int32_t getSupports8() const;
    Answer<host::imIndFormatRec> getIndFormat(std::uint32_t index) const;
    /// Frees the block as the host does.
    SubTypeNames getSubTypeNames(std::uint32_t fileType) const;

    /// Passes `record`, shortened to `bytes`, as param1 or param2 of a selector.
    template <class Record>
    Answer<Record> callWithRecord(std::int32_t selector, void* param1, const Record& record,
                                  std::size_t bytes = sizeof(Record)) const {
        GuardedRecord<Record> guarded(record, bytes);
        const std::int32_t result = call(selector, param1, guarded.address());
        checkBounds(guarded, host::selectorName(static_cast<std::uint32_t>(selector)));
        return {result, record, guarded.value()};
    }

    /// Notes the violation of a call that wrote outside its record.
    template <class Record>
    void checkBounds(const GuardedRecord<Record>& record, const char* call) const {
        checkBounds(Rule::kRecordsBounds, record.damage(), call, kRecordName<Record>);
    }
    /// The same of one that wrote outside a buffer to which the field of its record leads.
    void checkBuffer(const GuardedBytes& buffer, const char* call, const char* record) const {
        checkBounds(Rule::kRecordsBuffers, buffer.damage(), call, record, "buffer");
    }

 private:
    void checkBounds(Rule rule, const std::string& damage, const char* call, const char* record,
                     const char* field = "") const;

    Host* m_host;
    const Plugin* m_plugin;
    std::uint8_t m_fill = 0;
};

}  // namespace simhost
