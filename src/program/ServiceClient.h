#pragma once

#include <memory>

#include "config/AppConfiguration.h"
#include "sources/GlucoseAPIProtocol.h"
#include "sources/LibreLinkUpAPI.h"
#include "sources/ServiceEndpoints.h"
#include "support/Clock.h"
#include "support/HttpClient.h"

namespace tidewell {

/// What every service client needs. All of it outlives the clients.
struct ServiceClientParts {
    asio::any_io_executor engine;
    HttpClient& http;
    Clock& clock;
    const ServiceEndpoints& endpoints;
};

/// A client for the account's provider, that lives on the engine; never null.
[[nodiscard]] std::shared_ptr<GlucoseAPIProtocol> makeServiceClient(
    const ServiceClientParts& parts, const GlucoseAccountConfiguration& account);

/// The same for a LibreLinkUp account, whose client can also tell whom it may follow.
[[nodiscard]] std::shared_ptr<LibreLinkUpAPI> makeLibreLinkUpClient(
    const ServiceClientParts& parts, const GlucoseAccountConfiguration& account);

}  // namespace tidewell
