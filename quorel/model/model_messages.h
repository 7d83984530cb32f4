// Messages of the data model, kept in one place so that every thrower uses
// the same bytes.

#ifndef QUOREL_MODEL_MODEL_MESSAGES_H_
#define QUOREL_MODEL_MODEL_MESSAGES_H_

namespace quorel {
namespace messages {

inline constexpr const char kIllegalArrayAccess[] = "Ung\xFC" "ltiger Arrayzugriff.";
inline constexpr const char kIllegalElementAccess[] = "Ung\xFC" "ltiger Elementzugriff.";
inline constexpr const char kNotAnArray[] = "Feld ist kein Array.";
inline constexpr const char kValueNotDetermined[] = "Wert konnte nicht ermittelt werden.";

}  // namespace messages
}  // namespace quorel

#endif  // QUOREL_MODEL_MODEL_MESSAGES_H_
