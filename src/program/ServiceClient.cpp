#include "program/ServiceClient.h"

#include "sources/DexcomAPI.h"

namespace tidewell {

std::shared_ptr<GlucoseAPIProtocol> makeServiceClient(const ServiceClientParts& parts,
                                                      const GlucoseAccountConfiguration& account)
{
    switch (account.provider) {
    case GlucoseProvider::dexcom:
        return std::make_shared<DexcomAPI>(parts.engine, parts.http, parts.clock, parts.endpoints, account);
    case GlucoseProvider::libreLinkUp: return makeLibreLinkUpClient(parts, account);
    }
    std::unreachable();
}

std::shared_ptr<LibreLinkUpAPI> makeLibreLinkUpClient(const ServiceClientParts& parts,
                                                      const GlucoseAccountConfiguration& account)
{
    return std::make_shared<LibreLinkUpAPI>(parts.engine, parts.http, parts.clock, parts.endpoints, account);
}

}  // namespace tidewell
