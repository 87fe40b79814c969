#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/SimulatedAnswer.h"

namespace tidewell {

/// What a call of a simulated service answers instead of doing its work.
struct ServiceFault {
    enum class Kind {
        none,
        error,      ///< Dexcom Share only: HTTP 500 and the service's error object with `code`.
        nullId,     ///< Dexcom Share only: HTTP 200 and the null UUID.
        emptyBody,  ///< HTTP 200 and no body.
        html,       ///< `status` and an HTML page, as from the edge servers.
        status,     ///< `status` and an empty JSON object.
        body,       ///< `status` and `body` as it stands.
        garbage,    ///< HTTP 200 and, request by request: no JSON, cut JSON, wrong types, another shape,
                    ///< 100,000 levels, HTML.
        transport,  ///< The right answer, spoilt by `transport`.
    };
    Kind kind = Kind::none;
    std::string code{};  ///< Of error; any word.
    int status = 500;    ///< Of html, status and body.
    std::string body{};  ///< Of body.
    TransportFault transport = TransportFault::none;
    std::size_t cutAfter = 20;          ///< Of TransportFault::cutOff, in bytes.
    std::int64_t times = 0;             ///< Ends after so many requests; 0: goes on.
    std::vector<HttpHeader> headers{};  ///< Sent in addition, such as Retry-After.
    /// Sent in addition: a Retry-After with the date that lies so far after the answer, or before it.
    std::optional<Seconds> retryAfterDate{};
    bool operator==(const ServiceFault&) const = default;
};

/// The fault of one request, which counts towards `times`: `standing` becomes what is left of it.
[[nodiscard]] ServiceFault takeFault(ServiceFault& standing);

/// What a fault sends in place of a service's answer.
struct FaultBody {
    int status;
    std::string body;
    std::string_view type;  ///< Content-Type.
};
/// Empty for the kinds that need the service: none, error, nullId and transport. `wrongForms` is the
/// service's part of garbage, and `turn` counts its requests.
[[nodiscard]] std::optional<FaultBody> faultBody(const ServiceFault& fault,
                                                 std::span<const std::string_view> wrongForms,
                                                 std::size_t& turn);

/// Adds the fault's headers to an answer, and what happens to it on the way.
void addFault(SimulatedAnswer& answer, const ServiceFault& fault, Date now);

/// An HTML page as edge servers send with this status.
[[nodiscard]] std::string errorPage(int status);

}  // namespace tidewell
