#pragma once

#include <QString>

class QSqlError;

/// What is wrong with a journal's file.
struct FileProblem
{
    enum class Kind
    {
        Passing, ///< may go away by itself or by what a person does: try again
        Damaged, ///< the file's content makes no sense
        Refused  ///< a sound file that must not be written: of a newer version, or no journal at all
    };

    Kind kind = Kind::Passing;
    QString text; ///< what is wrong and what to do, without the file's name; one line
};

namespace fileproblem {

/// What an error of the database means. Looks at the file's folder where the error itself says too little.
FileProblem from(const QSqlError& error, const QString& file);

/// Why a file beside the journal's could not be made, from errno.
FileProblem fromSystem(int errorNumber, const QString& file);

} // namespace fileproblem
