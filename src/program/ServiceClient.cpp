#include "program/ServiceClient.h"

#include "sources/DexcomAPI.h"

namespace tidewell {

std::shared_ptr<GlucoseAPIProtocol> makeServiceClient(const ServiceClientParts& parts,
                                                      const GlucoseAccountConfiguration& account)
{
    switch (account.provider) {
    case GlucoseProvider::dexcom:
        return std::make_shared<DexcomAPI>(parts.engine, parts.http, parts.clock, parts.endpoints, account);
    case GlucoseProvider::libreLinkUp: return nullptr;
    }
    std::unreachable();
}

}  // namespace tidewell
