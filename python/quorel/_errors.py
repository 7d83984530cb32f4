"""The exceptions and warnings of the package."""


class PlausiError(Exception):
    """A failure reported by the library or a rule module: ``type`` is the
    library's exception number, ``message`` its (German) message. When a rule
    module cannot be loaded, ``detail`` says why: the system loader's reason,
    the entry point looked for and a hint at the usual mistake; otherwise it
    is None."""

    def __init__(self, type, message, detail=None):
        text = "%s (type %d)" % (message, type)
        super().__init__(text if detail is None else text + "\n" + detail)
        self.type = type
        self.message = message
        self.detail = detail


class RecordError(ValueError):
    """A record that cannot be handed to the rules, e.g. a text with a
    character outside Windows-1252, or with strict=True a column that names
    no field of the module; the message names the field or column."""


class ColumnWarning(UserWarning):
    """A column (a DataFrame column or a record's key) that names no field of
    the rule module, or has an index beyond a size the module declares: its
    values are never read. Given once per column and Checker."""


class DatabaseError(ValueError):
    """A database source (a connection string) that cannot be used: a
    malformed string, a database, table, column or query that cannot be
    opened or read, or a connection lost while records were read. The
    message names the database and the table or column."""


class RuleError(RuntimeError):
    """A C++ exception of a rule module's own (std::invalid_argument from
    std::stoi in rule code, std::bad_alloc), not one of the library's: the
    message gives its C++ type and text. check() raises it; check_frame makes
    it an error row of that record and goes on."""


class MaterialWarning(UserWarning):
    """A material that was given but that the rule module never queries
    (a misspelt name, say): it is never read. With strict=True it is a
    ValueError instead."""


class InitWarning(UserWarning):
    """An init parameter that was given but that the rule file never reads
    (a misspelt name, say): its rules name each parameter they read, and
    none names this one. A library module does not tell what it reads and
    gives none. With strict=True it is a ValueError instead."""


class FileEncodingWarning(UserWarning):
    """A CSV file whose start (or, after a start of ASCII alone, first row
    beyond ASCII) says that it is in another encoding than it is read in:
    UTF-8 without a byte-order mark read as Windows-1252 (the default),
    which turns each letter beyond ASCII into two, or Windows-1252 read as
    UTF-8. The message names the file, a line and the encoding= to pass.
    With strict=True it is a ValueError instead."""


class RuleFileError(ValueError):
    """A rule file (or text) that cannot be read or holds mistakes: the
    message tells every mistake at once, each as a line
    FILE:LINE:COLUMN: error: MESSAGE followed by the source line and a caret
    under the column."""
