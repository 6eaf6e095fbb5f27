#pragma once

#include "HeldFolder.h"
#include "OwnChanges.h"

namespace tidemark {

/// The user's Trash as all desktops share it (freedesktop.org Trash specification 1.0).
///
/// A file goes into the home trash when that is on its own file system, else into the trash where its file
/// system is mounted ("$topdir/.Trash/$uid" or "$topdir/.Trash-$uid"), else across file systems into the home
/// trash. In a trash it lies in the folder "files", and its record, with origin and date, in "info". Safe
/// from any thread and beside other programs.
class Trash {
public:
    /// The home trash is `$XDG_DATA_HOME/Trash` as the environment has it now. Throws filesystem_error when
    /// there is no home folder.
    explicit Trash(OwnChanges ownChanges = {});

    explicit Trash(FileURL homeTrash, OwnChanges ownChanges = {});

    /// Moves `file` into a trash and returns where it lies now. Throws filesystem_error: invalid_argument for
    /// what lies in a trash already, or holds one; illegal_byte_sequence for a trash whose path is not valid
    /// UTF-8; the error of a folder that is not where it was found any more names it. The file is still in its
    /// place then and no record is left.
    FileURL moveIn(const HeldEntry& file) const;

    /// Removes the record of a file that has been moved out of a trash, if `formerPlace` was in one. A
    /// record that cannot be removed stays: other programs ignore one without a file. So does one behind a
    /// link in the place of "info", or beside another folder than the file was in: it may be anybody's.
    void removeRecord(const HeldEntry& formerPlace) const;

private:
    void requireOutsideOfTrashes(const FileURL& url, const FileURL& realURL) const;

    FileURL m_home;
    OwnChanges m_ownChanges;
};

}  // namespace tidemark
