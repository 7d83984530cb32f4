// The messages of the masks, and the one way they are thrown.

#ifndef QUOREL_MASKS_MASK_MESSAGES_H_
#define QUOREL_MASKS_MASK_MESSAGES_H_

namespace quorel {
namespace mask_messages {

// Throws PlausiException type 8 with the message.
[[noreturn]] void fail(const char *message);

inline constexpr const char kValueDoesNotFitMask[] = "Der Wert entspricht nicht der Maske.";
inline constexpr const char kMaximalLength[] = "Die maximale L\xE4" "nge wurde \xFC" "berschritten.";
inline constexpr const char kMinimalLength[] = "Die minimale L\xE4" "nge wurde unterschritten.";

}  // namespace mask_messages
}  // namespace quorel

#endif  // QUOREL_MASKS_MASK_MESSAGES_H_
