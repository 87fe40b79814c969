#include "app/TermsAgreement.h"

#include <array>

namespace tidewell {

namespace {

constexpr auto sections = std::to_array<TermsSection>({
    {.title = "What Tidewell is",
     .text = "Tidewell shows the glucose readings that a sharing service already has for you or for somebody "
             "you follow. It is a convenience on your desktop. It is not a medical device, and no authority "
             "has examined or approved it."},
    {.title = "No decisions about treatment",
     .text = "Do not decide about insulin, food or any other treatment by what Tidewell shows. Use the "
             "receiver, the sensor's own app or a blood glucose meter for that, and do what your care team "
             "has told you. When how somebody feels does not match a reading, measure."},
    {.title = "Keep your other alarms on",
     .text = "Leave the alarms of the phone, the receiver or the pump switched on, and near enough to be "
             "heard. Tidewell stands beside them. It does not take their place."},
    {.title = "Alerts can fail",
     .text = "An alert needs a computer that is awake, a network, a service that answers, and a desktop that "
             "shows notifications and plays sounds. When one of them is missing, no alert comes, and nobody "
             "may notice that.\n\n"
             "Alerts that you switch off, quiet hours and snoozes are silent because you want them to be."},
    {.title = "Readings come from other companies",
     .text = "Tidewell gets readings from the services of other companies, with your account there. Those "
             "companies neither make nor endorse Tidewell. Their terms apply to your account, and whether "
             "they allow a program like this one is between you and them.\n\n"
             "Readings may be late, wrong or missing, and a service may stop at any time."},
    {.title = "What is stored, and where",
     .text = "Your password is in the keyring of this computer, or in a file that only you can read when you "
             "chose that. Account name and settings are in your "
             "configuration folder. Readings are saved only when you say so: encrypted, on this computer, "
             "until you delete them or the time that you chose has passed.\n\n"
             "Tidewell talks to the sharing service that you choose, and to nobody else. Nothing is sent to "
             "the people who make Tidewell."},
    {.title = "No warranty",
     .text = "Tidewell is given to you as it is, without a warranty of any kind. As far as the law allows, "
             "those who make it are not liable for harm that comes from using it, or from not being able to "
             "use it."},
    {.title = "Free software",
     .text = "You may use, study, share and change Tidewell under the Apache License, version 2.0. Its text "
             "is in the file LICENSE that comes with the program. These terms take away none of the rights "
             "that it gives you."},
});

}  // namespace

std::span<const TermsSection> termsOfUse() { return sections; }

bool hasAcceptedCurrentTerms(const UserDefaults& defaults)
{
    return defaults.text(acceptedTermsVersionKey) == currentTermsVersion;
}

bool hasAcceptedTerms(const UserDefaults& defaults)
{
    return !defaults.text(acceptedTermsVersionKey).value_or("").empty();
}

void acceptTerms(UserDefaults& defaults, Date now)
{
    defaults.set(acceptedTermsVersionKey, std::string{currentTermsVersion});
    defaults.set(termsAcceptedAtKey, now);
}

}  // namespace tidewell
