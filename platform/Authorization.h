#pragma once

#include "platform/PropertyList.h"

#include <array>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// A user's authorization: a reference to rights that the system has granted or may grant. Result codes are those of
// the platform's authorization services. Not thread-safe.
class Authorization {
public:
    using Status = std::int32_t;
    static constexpr Status Success = 0;
    static constexpr Status InvalidReference = -60002;
    static constexpr Status InvalidPointer = -60004;
    static constexpr Status Denied = -60005;
    static constexpr Status Canceled = -60006;
    static constexpr Status InteractionNotAllowed = -60007;
    static constexpr Status Internal = -60008;
    static constexpr Status ExternalizeNotAllowed = -60009;
    static constexpr Status InternalizeNotAllowed = -60010;

    enum Flags : unsigned { Defaults = 0, InteractionAllowed = 1, ExtendRights = 2, DestroyRights = 8 };

    using ExternalForm = std::array<std::uint8_t, 32>;

    // An authorization without rights.
    static std::expected<std::unique_ptr<Authorization>, Status> create();

    // What the bytes that a peer sent stand for. `sender` is the peer as the transport names it (on a message bus,
    // the unique name of its connection); bytes that stand for anyone else are refused with
    // InternalizeNotAllowed. A transport that proves possession by itself passes an empty name.
    static std::expected<std::unique_ptr<Authorization>, Status> createFromExternalForm(const ExternalForm& form,
                                                                                        std::string_view sender);

    virtual ~Authorization() = default; // as free(Defaults)

    // Asks for one right, with a dialog that shows the prompt when the flags allow interaction. Blocks while it is
    // open. Success, Canceled, InteractionNotAllowed, Denied or another result code.
    virtual Status copyRight(const std::string& name, const std::optional<std::string>& prompt, unsigned flags) = 0;

    virtual std::expected<ExternalForm, Status> makeExternalForm() = 0;

    // DestroyRights also forgets what was granted, for every holder. The object can't be used afterwards.
    virtual void free(unsigned flags) = 0;

    // Writes a right's definition to the rights database; needs the privilege to do so.
    virtual Status setRight(const std::string& name, const Dictionary& definition) = 0;

    // A right's definition, readable by everyone. Denied when there is none.
    static std::expected<Dictionary, Status> right(const std::string& name);
};

} // namespace platform
