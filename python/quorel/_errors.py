"""The exceptions of the package."""


class PlausiError(Exception):
    """A failure reported by the library or a rule module: ``type`` is the
    library's exception number, ``message`` its (German) message."""

    def __init__(self, type, message):
        super().__init__("%s (type %d)" % (message, type))
        self.type = type
        self.message = message


class RecordError(ValueError):
    """A record that cannot be handed to the rules, e.g. a text with a
    character outside Windows-1252; the message names the field."""
