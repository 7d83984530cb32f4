// Messages that several value kinds throw with, kept in one place so that
// every thrower uses the same bytes.

#ifndef QUOREL_VALUES_VALUE_MESSAGES_H_
#define QUOREL_VALUES_VALUE_MESSAGES_H_

namespace quorel {
namespace messages {

inline constexpr const char kNotInitialized[] = "Wert ist nicht initialisiert.";
inline constexpr const char kIterationOverflow[] = "Iterations\xFC" "berlauf.";
inline constexpr const char kUnavailablePrefix[] = "Dieser Wert ist nicht verf\xFC" "gbar: ";
inline constexpr const char kNoFurtherInformation[] = "Keine weiteren Informationen.";

}  // namespace messages
}  // namespace quorel

#endif  // QUOREL_VALUES_VALUE_MESSAGES_H_
