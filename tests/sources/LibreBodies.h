#pragma once

#include <fmt/format.h>
#include <string>
#include <string_view>

namespace tidewell {

// Bodies as LibreLinkUp sends them; everybody in them is invented.

inline constexpr std::string_view libreUser = "5d2c7a10-91f4-4c3b-8e6d-0f1b2a3c4d5e";
inline constexpr std::string_view libreUserHash =
    "06d8ace5d51c4f78e2c36866d01f95f0416b8de567814096baf4a4d56c84c0b5";
inline constexpr std::string_view librePatient = "9a7b6c5d-1111-4222-8333-444455556666";
inline constexpr std::string_view libreToken = "eyJhbGciOiJIUzI1NiJ9.e30.c2lnbmF0dXJl";

/// A good sign-in; the ticket is good for 180 days by default.
inline std::string libreLogin(std::string_view token = libreToken, std::string_view expires = "1787990400")
{
    return fmt::format(
        R"({{"status":0,"data":{{"user":{{"id":"{}","firstName":"Ada","lastName":"Muster"}},)"
        R"("authTicket":{{"token":"{}","expires":{},"duration":15552000000}},"invitations":null}}}})",
        libreUser, token, expires);
}
inline std::string libreRedirect(std::string_view region)
{
    return fmt::format(R"({{"status":0,"data":{{"redirect":true,"region":"{}"}}}})", region);
}
/// One measurement; `more` follows the value.
inline std::string libreMeasurement(std::string_view value, std::string_view time = "3/2/2026 7:55:13 AM",
                                    std::string_view more = "")
{
    return fmt::format(
        R"({{"FactoryTimestamp":"{}","Timestamp":"3/2/2026 8:55:13 AM","type":1,"ValueInMgPerDl":{}{}}})",
        time, value, more);
}
/// The data of a graph answer.
inline std::string libreGraphData(std::string_view current, std::string_view graph,
                                  std::string_view patient = librePatient)
{
    return fmt::format(R"({{"connection":{{"patientId":"{}","firstName":"Grace","glucoseMeasurement":{}}},)"
                       R"("activeSensors":[],"graphData":{}}})",
                       patient, current, graph);
}
/// A whole answer, with the refreshed ticket that the service adds.
inline std::string libreAnswer(std::string_view data)
{
    return fmt::format(R"({{"status":0,"data":{},"ticket":{{"token":"another","expires":1787990499}}}})",
                       data);
}
inline std::string libreGraph()
{
    return libreAnswer(libreGraphData(libreMeasurement("118", "3/2/2026 7:59:13 AM", R"(,"TrendArrow":4)"),
                                      "[" + libreMeasurement("131", "3/2/2026 7:35:02 AM") + "]"));
}

}  // namespace tidewell
