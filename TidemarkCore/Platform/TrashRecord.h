#pragma once

#include "Date.h"
#include "FileURL.h"
#include "HeldFolder.h"
#include "OwnChanges.h"

#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

/// The record ("NAME.trashinfo") of one file in a trash: where it came from and when.
///
/// Made before the file is moved, so that no file is ever in a trash without one. It goes away again at the
/// end of its scope unless it is kept.
class TrashRecord {
public:
    /// Writes the record of the file that is to be `name` in the trash. Nothing when there is a record for
    /// that name; throws filesystem_error when it cannot be written, and none is left. `path` is where the
    /// file came from, absolute or relative to the top of its file system.
    /// It is not used for longer than `infoFolder`.
    static std::optional<TrashRecord> create(const HeldFolder& infoFolder, std::string_view name,
        std::string_view path, OwnChanges ownChanges);

    /// What a record says; the date in the current time zone.
    static std::string text(std::string_view path, Date deleted);

    /// Removes the record of `name`; one that cannot be removed stays.
    static void remove(const HeldFolder& infoFolder, std::string_view name, OwnChanges ownChanges);

    /// The name of a file in a trash, the first choice being number 1: the same, then "NAME 2.ext" and so
    /// on, short enough for the name of its record.
    static std::string nameInTrash(std::string_view name, int number);

    TrashRecord(TrashRecord&& other) noexcept;
    TrashRecord& operator=(TrashRecord&&) = delete;
    ~TrashRecord();

    void keep() { m_isKept = true; }

private:
    TrashRecord(HeldEntry place, OwnChanges ownChanges);

    HeldEntry m_place;
    OwnChanges m_ownChanges;
    bool m_isKept = false;
};

}  // namespace tidemark
