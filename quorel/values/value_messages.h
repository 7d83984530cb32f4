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
inline constexpr const char kNotABool[] = "Konnte nicht in einen boolschen Wert umgewandelt werden.";
inline constexpr const char kBoolToDate[] =
    "Ein boolscher Wert kann nicht in einen Datumswert umgewandelt werden.";
inline constexpr const char kNumberToDate[] =
    "Eine Zahl kann nicht in einen Datumswert umgewandelt werden.";
inline constexpr const char kRangeToDate[] =
    "Eine Reihe kann nicht in einen Datumswert umgewandelt werden.";
inline constexpr const char kDateToInteger[] =
    "Ein Datum kann nicht in eine ganze Zahl konvertiert werden.";
inline constexpr const char kDateToReal[] = "Ein Datum kann nicht in eine Zahl konvertiert werden.";
inline constexpr const char kDateToBool[] =
    "Ein Datum kann nicht in einen boolschen Wert konvertiert werden.";

inline constexpr const char kSequenceToBool[] =
    "Eine Sequenz kann nicht in einen boolschen Wert umgewandelt werden.";
inline constexpr const char kIntervalToInteger[] =
    "Ein Interval kann nicht in eine ganze Zahl umgewandelt werden.";
inline constexpr const char kIntervalToReal[] = "Ein Interval kann nicht in eine Zahl umgewandelt werden.";
inline constexpr const char kIntervalToBool[] =
    "Ein Interval kann nicht in einen boolschen Wert umgewandelt werden.";
inline constexpr const char kIntervalNotIterable[] = "Ein Interval kann nicht iteriert werden.";

// Throws the conversion failure (type 8) with the message.
[[noreturn]] void refuseConversion(const char *message);

}  // namespace messages
}  // namespace quorel

#endif  // QUOREL_VALUES_VALUE_MESSAGES_H_
