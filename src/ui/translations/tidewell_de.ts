<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>AccountPage</name>
    <message>
        <source>Sign in</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AlertsPage</name>
    <message>
        <source>&amp;Low glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;High glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid &amp;fall</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid &amp;rise</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No &amp;data for 15 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alert me with a notification and a sound:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try now whether you would notice an alert on this computer:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Notifications are disabled for Tidewell.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enable notifications in System Settings &gt; Notifications to receive glucose alerts.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open notification &amp;settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Did you see and hear it?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sending test alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send &amp;test alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send &amp;test alert again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Good: that is how alerts reach you.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing was found that keeps alerts away. Look whether the desktop collects notifications in a list without showing them, and whether the sound is turned up. Then send the test alert again.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Core</name>
    <message>
        <source>No update yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last update: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next retry at %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No readings yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show graph</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch account…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show terms…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved history needs attention</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snooze alerts (30 min)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snooze alerts (2 hours)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Resume alerts now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No alerts (no category is selected) snoozed until %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low alerts snoozed until %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High alerts snoozed until %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid-change alerts snoozed until %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low and high alerts snoozed until %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low and rapid-change alerts snoozed until %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High and rapid-change alerts snoozed until %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low, high and rapid-change alerts snoozed until %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loading glucose…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refreshing glucose…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signing in…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loading glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refreshing glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signing in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 minute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 hour</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 hours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 hour and 1 minute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 hour and %1 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 hours and 1 minute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 hours and %2 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 ago</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 day ago</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 days ago</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>less than 5 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 day %1 h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 days %2 h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 h %2 min</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 a day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mon %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tue %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wed %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Thu %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fri %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sat %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sun %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last reading: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No readings in the last hour</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No readings in the last %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 in %2 min</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Glucose graph, last %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 reading in this time window.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 readings in this time window.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, %2, %3, %4.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>milligrams per deciliter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>millimoles per liter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 milligrams per deciliter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 millimoles per liter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>at or below the low threshold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>in range</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>at or above the high threshold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>rising quickly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>rising</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>rising slightly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>steady</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>falling slightly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>falling</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>falling quickly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unknown trend</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No glucose readings available.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Current glucose: %1, %2, %3.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stale glucose reading.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Current glucose unavailable.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last known glucose: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trend unavailable.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last known value %1, received %2 ago.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Measured at %1, %2 ago, %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for the first reading.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the latest glucose reading.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open the menu for the graph and settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stale glucose reading</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last glucose reading was %1 ago.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check your sensor connection and sensor app if readings do not resume.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Authentication failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unable to authenticate with %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check your username and password in Settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Authentication required</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot authenticate with %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Verify your credentials in Settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Account locked</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 has locked the account after too many failed sign-ins.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait a while, check your username and password, then sign in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No internet connection available.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connect to the internet to retrieve glucose data.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unable to connect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unable to connect to %1 servers.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check your internet connection and try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An unexpected error occurred.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An unexpected error occurred: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The app will retry automatically.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check Settings and ensure your glucose account is active.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 busy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell will wait before trying again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 needs attention</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Resolve the issue, then choose Reconnect in Account settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in required</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in to your glucose account to see glucose readings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Settings to enter your glucose account details.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in again, or mend the file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No data available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No glucose readings available from %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ensure your sensor is active and readings appear in %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No new data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unable to retrieve new glucose readings from %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check your internet connection and %1 settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clock is wrong</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The newest glucose reading is dated %1 in the future.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the date and time of this computer and of the phone with the sensor.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Terms of use</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell shows no readings before you have accepted its terms of use.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Read and accept them: choose &quot;Show terms…&quot; in the menu.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password not available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password of the account is not in the keyring.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unlock your keyring, or sign in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invalid %1 URL</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Authentication failed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Login failed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unable to process server response: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dexcom server error (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invalid region</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Session expired</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No glucose readings available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invalid response from server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please check your credentials.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unable to start a Dexcom session.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Username is required</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password is required</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Expected an account id</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Expected a session id</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Expected an array of glucose readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp is limiting requests. Tidewell will wait before trying again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp is unavailable (%1). Try again later.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp could not find a supported account region. Check the region in Settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unable to sign in to LibreLinkUp. Check your email and password in the LibreLinkUp app.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your LibreLinkUp session has expired. Please sign in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open the LibreLinkUp app and review its updated terms or privacy notice, then try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open the LibreLinkUp app and complete the account setup shown there, then try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp requires a newer connection version. Check for an update to Tidewell.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No LibreLinkUp connections were found. Accept a sharing invitation in the LibreLinkUp app first.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select the person whose readings you want to display in Settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The selected LibreLinkUp connection is no longer available. Check sharing in LibreLinkUp and select a connection in Settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No Libre glucose readings are available. Check that readings appear in the LibreLinkUp app.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp returned an unexpected response. Try again later.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp returned a reading with an invalid value or timestamp.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The address cannot be used.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s name could not be found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not connect to the server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No secure connection to the server could be made.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The request timed out.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The network connection was lost.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s answer was too large.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server redirected to an address that is not trusted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s answer could not be understood.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invalid glucose reading format</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Missing glucose value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Missing trend information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Missing or invalid glucose reading timestamp</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in again, since there is no password: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password could not be read: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password could not be stored: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password of the former account could not be removed: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password stands in clear text in %1 and could not be moved: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The configuration file %1 cannot be read: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The configuration file %1 is damaged and was left as it is: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The configuration could not be saved: a text in it is not valid UTF-8, or a number not finite.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The configuration could not be saved to %1: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keychain error: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invalid configuration data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the secret store answered</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the secret store holds nothing for this account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>what the secret store holds is damaged</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the file of the secret store is not ours alone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no secret store answers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the secret store is locked</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unlocking the secret store was cancelled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the file of the secret store cannot be read or written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the secret store failed with status %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low glucose alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (low threshold %2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High glucose alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (high threshold %2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid glucose drop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1. Glucose is falling quickly.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid glucose rise</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1. Glucose is rising quickly.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No glucose data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No new reading has come.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No reading that alerts can go by since %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No reading since Tidewell started at %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last reading at %1, %2 ago.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No reading since %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell test alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Notifications are configured correctly.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Notifications are disabled.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Test alert sent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Test alert could not be sent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The notification centre failed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snooze 30 min</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The notification server does not answer: alerts are not shown.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restart it, or log out of the desktop and in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no notification server: alerts are not shown.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start one: desktops bring their own, elsewhere install dunst or mako and start it with the session.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The notification server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 did not show the last alert.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restart it, or log out of the desktop and in again; then try: tidewell test-alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 answers and shows notifications.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“Do not disturb” is on: alerts may be neither shown nor heard.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch it off in the desktop&apos;s notification settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“Do not disturb” is off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Whether there is a sound output cannot be told.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Listen to one: tidewell test-alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no sound output: alerts are silent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connect speakers or headphones, and see that PipeWire or PulseAudio runs: pactl info</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is a sound output.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sound is muted: alerts are silent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unmute it: pactl set-sink-mute @DEFAULT_SINK@ 0</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The volume is at zero: alerts are silent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn it up: pactl set-sink-volume @DEFAULT_SINK@ 60%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The volume is at %1 %: an alert is easily missed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The volume is at %1 %.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 plays the alert sounds.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The desktop&apos;s alert sounds are not installed: alerts are silent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Install the package sound-theme-freedesktop.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sound of the last alert could not be played.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See that PipeWire or PulseAudio runs and that libcanberra is installed; then try: tidewell test-alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The alert sounds are installed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The glucose service cannot be reached.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the internet connection; Tidewell tries again by itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service refuses the user name or the password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in again from the menu, or with: tidewell account set</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service has locked the account after too many failed sign-ins.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait a while, then sign in again from the menu, or with: tidewell account set</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The session has ended, and a new sign-in did not help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service asks Tidewell to wait.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait: Tidewell asks again by itself. Fewer programs on one account help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account needs you.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account needs you: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Resolve it in the service&apos;s own app, then run: tidewell account reconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service has no readings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See that the sensor is active and that its readings appear in the sharing app.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service answers with an error.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service answers with an error: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait: Tidewell asks again by itself. If it lasts, check the account.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No glucose account is signed in.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in from the menu, or with: tidewell account set</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account is signed in, and the service answers.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No reading has come yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait a few minutes, then look again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The newest reading is less than a minute old.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The newest reading is %1 old.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The newest reading is dated %1 in the future: it raises no alert.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The newest reading is %1 old: it raises no alert any more.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There has been no reading for %1: no alert comes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See that the sensor is active, that the phone has a network, and that its readings appear in the sharing app.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low alerts come at %1 and below.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid-fall alerts come with each fast fall.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High alerts come at %1 and above.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid-rise alerts come with a fast rise.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Missing-data alerts come when there has been no reading for 15 minutes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low alerts are off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid-fall alerts are off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High alerts are off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid-rise alerts are off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Missing-data alerts are off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch them on: tidewell settings set %1 true</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The low threshold (%1) is not below the high one (%2).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose others: tidewell settings set lowGlucoseThreshold 72</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Let lows through: tidewell settings set allowLowAlertsDuringQuietHours true</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours are off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours last all day: only lows are told.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours last all day: no alert comes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set their start and their end to different times: tidewell settings set quietHoursStartMinutes 22:00</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The quiet hours are no times of a day.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set them anew: tidewell settings set quietHoursStartMinutes 22:00, and quietHoursEndMinutes 07:00</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2: now only lows are told.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing to do if that is meant so.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2: now no alert comes, not even for a low.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2: no alert comes then, not even for a low.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2 let lows through.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts are not snoozed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>End the snooze from the menu, or with: tidewell resume</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell is running.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell is not running: nobody watches for alerts.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start it: tidewell</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts are on.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts are off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch them on: tidewell settings set alertsEnabled true</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The computer suspends itself after %1 without use: asleep, it tells nothing.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch automatic suspend off in the desktop&apos;s power settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts are off: a low is not announced.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low alerts are off: a low is not announced.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low alerts are snoozed until %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours last all day: a low is not announced.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2: a low is not announced then.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved history settings could not be read. History collection is paused.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose either 30 or 90 days of saved history.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in to enable saved history.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The saved history encryption key is unavailable. Existing history has been preserved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved history could not access macOS Keychain. Try again after unlocking your Mac.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved history could not be decrypted or read. Existing files have been preserved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved history could not be updated on this Mac. Live monitoring is unaffected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>History saving is off, but deletion is incomplete. Tidewell will retry cleanup; you can also try deleting again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loading history…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Calculating insights…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>History unavailable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your saved history could not be read. You can try again or manage it in Insights settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No readings in this period</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mean glucose weighted by observed time over the selected period.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Spread of glucose readings around the average, weighted by observed time.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Share of observed time. Ranges are fixed and separate from your alert thresholds.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not a lab HbA1c result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs saved readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs 14 days of history</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs a 14-day period</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Needs 70% coverage</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 × mean glucose in %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>GMI needs saved readings, 14 days of history, and at least 70% collected coverage.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose a period of at least 14 days.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Available after 14 days of history with at least 70% collected coverage.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>below %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 to below %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>above %1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>above %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Very low</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In range</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Very high</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How the profile is built</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The profile combines every day in the selected period into a single 24-hour day. The line shows the median (middle value) for each time of day, the darker band covers the middle 50%, and the lighter band covers the middle 90%, after weighting readings by the time they represent. Hover over the chart, or click to keep a time selected, to see its values. The green shading marks the %1–%2 %3 target range. Times of day with readings from fewer than %4 different days are left blank.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Readings are grouped into 15-minute intervals using your Mac’s current time zone, and each interval needs readings from at least %1 different dates. The bands show the 25th–75th and 5th–95th percentiles. Equally weighted Dexcom readings use type-7 interpolation; Libre readings use the weighted distribution to account for their different sampling intervals. Curves are smoothed between intervals for display only: the values shown on hover are unchanged, and gaps are never filled. Repeated clock times during daylight saving changes share an interval.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Early insights. Overnight readings are often missing; patterns may change as more history is saved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Early insights. Patterns may change as more history is saved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Limited data. Overnight readings are often missing; these insights may not reflect your usual glucose.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Limited data. Gaps in the selected period may affect these insights.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Overnight readings are often missing. These insights may not represent your usual glucose.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking saved history</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Get started with Insights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>History collection is paused</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Building your insights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>More readings needed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preparing insights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your insights are ready</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking your saved history.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Explore your glucose patterns using readings saved on this Mac. Your report will appear once enough history has been collected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Resume saving in Insights settings to keep building your report.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Readings are saved after a successful glucose refresh. Insights needs 3 days of collection and at least 70% coverage over the latest 3 days.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 hour left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 hours left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 day left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 days left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 in the initial 3-day collection period. Insights also needs at least 70% coverage over the latest 3 days. Keep Tidewell running to build your report.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insights needs at least 70% coverage over the latest 3 days. Keep Tidewell running to build your report.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your history is ready for insights.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 of 3 days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Latest 3 days: %1% saved (70% target)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Progress always uses the latest 3 days, regardless of the report period.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Meeting these targets does not guarantee representative data.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>History collection progress</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To save readings on this computer: tidewell history enable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saving is off, so new readings aren’t being added.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved history is another one than that of this report. Open the report again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; exists. Nothing was written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be written: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add the applet &quot;System Tray&quot; to the panel.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Install an indicator for AppIndicators, such as wingpanel-indicator-ayatana.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Install and switch on the GNOME extension &quot;AppIndicator and KStatusNotifierItem Support&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add the widget &quot;System Tray&quot; to a panel.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add the item &quot;Status Tray Plugin&quot; to the panel.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add the widget &quot;Status Notifier&quot; to the panel.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add the applet &quot;Indicator Applet&quot; or &quot;Notification Area&quot; to the panel.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add the applet &quot;XApp Status Applet&quot; to the panel.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use a bar with a tray, such as waybar, or let your bar run &quot;tidewell watch&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch on the tray of i3bar, or let your bar run &quot;tidewell watch&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use a panel or bar with a tray, or let your bar run &quot;tidewell watch&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No panel shows Tidewell</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts come all the same. To see the graph, start Tidewell again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A phone number needs a plus sign and the country code in front, as in +1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password or the user name was mistyped; in a password, capitals and small letters differ.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The region is another one: it is that of the country where the account was made, not where you are now.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is a follower&apos;s account: Tidewell needs the account of the person who wears the sensor, the one in the Dexcom app itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The user name is the e-mail address of the LibreLinkUp account.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The e-mail address or the password was mistyped.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is the account of the person who wears the sensor: Tidewell needs that of the follower, the one in the LibreLinkUp app, which may have another password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New terms are waiting to be accepted: sign out of the LibreLinkUp app and in again, and see whether it asks for something.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sign-in was refused</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Correct what may be wrong and try again; many wrong tries lock the account.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Correct what may be wrong and try again; a few wrong tries lock the account for some minutes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account is locked for a while</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There were too many sign-ins with a wrong password, from here or from another program.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait a quarter of an hour without trying, then sign in with the right password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service could not be reached</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The date or the time of this computer is wrong.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A network filter, a virus scanner or the sign-in page of a public network stands in between.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the clock, or use another network, and try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The network asks for a sign-in of its own, as in hotels and trains.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A proxy stands in between and does not let the service through.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open a web page in the browser to see whether the network asks for something.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The internet connection is slow or was interrupted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service is overloaded at the moment.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the internet connection and try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This computer is not connected to the internet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A firewall or a proxy does not let Tidewell through.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The region does not fit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account belongs to a region that this version of Tidewell does not know, or the address list of this computer lacks it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose another region and try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp needs attention</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp has new terms of use or a new privacy notice, and nobody accepted them with this account yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The app shows them only after a new sign-in.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign out of the LibreLinkUp app on the phone and in again, accept what it shows, then try again here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The e-mail address of the account was not confirmed yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp asks for a name, a code or a setting that only its app can take.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign out of the LibreLinkUp app on the phone and in again, do what it asks for, then try again here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This person no longer shares</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The person who wears the sensor ended sharing, or removed you as a follower.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The person moved to another account, which needs a new invitation.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go back, sign in again and choose who is listed then.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nobody is chosen yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account can follow one person or more, and none of them was chosen.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go back and choose whose readings to show.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account needs attention</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The Dexcom app waits for something that only it can take.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open the Dexcom app, do what it asks for, then try again here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service asks to wait</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account is locked for a while, after several wrong passwords.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Another program asks with the same account, or from the same network, too often.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp wants a newer version</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp has changed, and this version of Tidewell is too old for it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Install the newest Tidewell; if you have it, try again in a few days.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service is in trouble</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service is overloaded or under maintenance.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait a few minutes and try again; name and password stay as they are.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service does not let this network in for a while, after many requests.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service&apos;s answer was not understood</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service is under maintenance or has changed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sign-in page of a public network answered in place of the service.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again in a few minutes, or from another network.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The user name has a form that the service does not know.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The session ended at once</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password was changed a moment ago.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again; if it happens again, check the password in the service&apos;s app.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Another program signed in with the same account in the same moment.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nobody shares with this account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The person who wears the sensor has not invited this e-mail address yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The invitation was not accepted yet in the LibreLinkUp app.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is the account of the person who wears the sensor, which follows nobody: Tidewell needs a follower&apos;s.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Have the person invite this address in the Libre app, accept the invitation in the LibreLinkUp app, then try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signed in, but there are no readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sharing is switched off in the Dexcom app.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No follower was invited: Dexcom shares nothing until there is at least one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no active sensor, or it is warming up.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The phone with the sensor had no internet connection for the last 24 hours.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch Share on in the Dexcom app and invite a follower; then try again, or go on without a value.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The phone with the sensor had no internet connection for the last twelve hours.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See whether the LibreLinkUp app shows a value; then try again, or go on without one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password is needed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password of this account is not stored.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The keyring is locked, or the password was removed from it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter the password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account could not be saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The keyring is locked, or its unlock dialog was closed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No keyring is running in this session.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unlock the keyring and try again; what you entered is kept until then.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The disk is full.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The folder of the settings cannot be written to.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Make room or mend the folder&apos;s permissions, then try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait for %1, then try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What Tidewell is</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No decisions about treatment</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep your other alarms on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts can fail</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Readings come from other companies</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What is stored, and where</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No warranty</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Free software</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell shows the glucose readings that a sharing service already has for you or for somebody you follow. It is a convenience on your desktop. It is not a medical device, and no authority has examined or approved it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Do not decide about insulin, food or any other treatment by what Tidewell shows. Use the receiver, the sensor&apos;s own app or a blood glucose meter for that, and do what your care team has told you. When how somebody feels does not match a reading, measure.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Leave the alarms of the phone, the receiver or the pump switched on, and near enough to be heard. Tidewell stands beside them. It does not take their place.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An alert needs a computer that is awake, a network, a service that answers, and a desktop that shows notifications and plays sounds. When one of them is missing, no alert comes, and nobody may notice that.

Alerts that you switch off, quiet hours and snoozes are silent because you want them to be.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell gets readings from the services of other companies, with your account there. Those companies neither make nor endorse Tidewell. Their terms apply to your account, and whether they allow a program like this one is between you and them.

Readings may be late, wrong or missing, and a service may stop at any time.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your password is in the keyring of this computer. Account name and settings are in your configuration folder. Readings are saved only when you say so: encrypted, on this computer, until you delete them or the time that you chose has passed.

Tidewell talks to the sharing service that you choose, and to nobody else. Nothing is sent to the people who make Tidewell.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell is given to you as it is, without a warranty of any kind. As far as the law allows, those who make it are not liable for harm that comes from using it, or from not being able to use it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>You may use, study, share and change Tidewell under the Apache License, version 2.0. Its text is in the file LICENSE that comes with the program. These terms take away none of the rights that it gives you.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DonePage</name>
    <message>
        <source>Look for the value in your panel. It looks like this:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A click on it opens the menu, with the graph of the last hours.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The menu also leads to Insights and to the settings, where you can change all of this.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A question mark behind the value means that it is old: look at the phone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Some lows will be silent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>When you choose Finish, Tidewell begins to fetch readings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell is ready</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In the panel: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FirstReadingPage</name>
    <message>
        <source>The first value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Ask again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Asking for the newest value…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Measured just now.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Measured %1 ago.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compare it with the phone or the receiver: it should be the same.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This value is old: the present one may be quite different. Look whether the phone has a connection and is near the sensor.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing newer has come, so there is no value to show. Look whether the phone has a connection and is near the sensor. You can go on; new values appear by themselves.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Account: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>GlucosePage</name>
    <message>
        <source>Unit:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;mg/dL</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>mmo&amp;l/L</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low threshold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High threshold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>At these limits and beyond, the value gets a colour and an alert comes. Ask your care team when you are not sure; everything can be changed later.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lo&amp;w threshold:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;High threshold:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unit and limits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Red: %1 or below, or falling quickly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No colour: in between</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Yellow: %1 or above, or rising quickly</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>HistoryPage</name>
    <message>
        <source>Saved readings give you Insights: time in range, averages and a daily profile, to understand them better or to take them to the doctor. It is up to you; Tidewell works without.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Each reading from now on, for this account and person: value, trend and time. Nothing from before.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Where</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On this computer only, encrypted. Nothing is ever uploaded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is kept where Tidewell keeps your password: in your keyring. Where there is no keyring, it is in a file that only you can read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How long</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In the settings, at any time. What is saved stays.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In the settings as well. It removes the readings, and their key last.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save readings on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save readings?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 days; older readings are removed. The settings offer 30 and 90 days.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InsightsReportDialog</name>
    <message>
        <source>PDF document</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>PNG picture</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InsightsReportPage</name>
    <message>
        <source>Glucose report</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Made on %1 (%2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>with Tidewell %1, offline on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 to %2, %3, time zone %4</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sensor active %1 of the time: %2 of %3, %4 readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>. History since %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Demonstration: these readings are not those of the person who made this page.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved readings of these days could not be read and are missing: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Left out, since no sensor can have measured it: 1 reading.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Left out, since no sensor can have measured them: %1 readings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Profile of a day, from 1 day with readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Profile of a day, from %1 days with readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The profile needs readings of at least %1 different days.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time in ranges</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Figures and their targets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>by observed time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>target</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Targets of the international consensus for most adults with diabetes; yours may differ.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>none</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mean glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>GMI</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Variation (CV)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>at most %1%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Median</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Middle half</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>over 70%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Below %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>under 4%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>under 1%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Above %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>under 25%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>under 5%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sensor active</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>at least 70%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Episodes of at least 15 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a week</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>longest</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, %1 over 2 h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Gaps may hide further episodes, and longer ones.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The newest %1 of %2 days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From midnight to midnight; the shading is the range from %1 to %2 %3, the upper edge is %4. The share is the time in range.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How this was calculated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Weighting: each reading stands for the time until the next one, at most for its sample duration. What is missing beyond that is a gap. Gaps are never bridged: they weigh nothing, curves stop at them, and episodes end there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mean, standard deviation (of the population, no n−1), percentiles and shares are weighted by that time. Variation is standard deviation by mean.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bands, by exact values in mg/dL: very low below 54, low 54 to below 70, in range 70 to 180, high above 180 to 250, very high above 250. %1 In mmol/L values are divided by 18.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>GMI = %1. %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>GMI: %1. %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Profile: readings of all days by quarters of an hour of the local clock; the line is the median, the areas hold the middle 50% and 90%. Quarters with readings of fewer than %1 dates stay blank; curves are smoothed for display only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Episodes: at least 15 minutes beyond a threshold, ended by 15 minutes back; a week is a week of observed time. A low of over 2 hours is an extended one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sources: bands, targets and coverage Battelino et al. 2019, doi 10.2337/dci19-0028; episodes Battelino et al. 2023, doi 10.1016/S2213-8587(22)00319-9; GMI Bergenstal et al. 2018, doi 10.2337/dc18-1581.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell is no medical device. Nothing was sent anywhere to make this page.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LoginPage</name>
    <message>
        <source>Tidewell can only show values and alert you while it runs. When it starts together with the desktop, nobody has to remember it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Start Tidewell when I log in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start at login</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Now: your desktop starts Tidewell when you log in.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Now: your desktop does not start Tidewell by itself.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PersonName</name>
    <message>
        <source>No name</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PersonPage</name>
    <message>
        <source>Who is it about?</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SettingsAboutPage</name>
    <message>
        <source>windows, desktop bus, pictures</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>tasks, JSON documents</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>connections to the glucose services</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>encryption</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>command line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>saved readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>time zones</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>keyring</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>network state</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>alert sounds</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>state of the sound output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the demonstration&apos;s answers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The demonstration replays real readings that were published for research; nobody may try to identify a participant. Both were taken from the harmonised files of the Glucose-ML collection (Prioleau, Lu, Cui, 2025, arXiv:2507.14077).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dexcom: seven days of subject c2s04 of PhysioCGM (Quamer et al., 2025, figshare, https://doi.org/10.6084/m9.figshare.28136294.v1), CC0 1.0. Changes: seven days cut out, times rounded to seconds, rows without a value dropped, “Low” written as 39.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LibreLinkUp: seven days of participant P13 of the BrisT1D-Open Dataset (James, Armstrong, O&apos;Kane, Emerson, Abdallah, 2025, University of Bristol, https://doi.org/10.5523/bris.33z5jc8fa6tob21ptrugzqog08), licensed under CC BY 4.0 (https://creativecommons.org/licenses/by/4.0/), without any warranty. Changes: time zones corrected where possible, duplicates removed, mmol/L multiplied by 18 and rounded, seven days cut out, values between the readings computed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SettingsAlertsPage</name>
    <message>
        <source>Never</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>After 1 minute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>After %1 minutes</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SettingsTexts</name>
    <message>
        <source>%1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Note</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Good</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Caution</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Problem</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TermsPage</name>
    <message>
        <source>I &amp;accept the terms of use</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Terms of use</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WelcomePage</name>
    <message>
        <source>The value, always in sight</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your panel shows the current glucose value and its trend, and says when it gets old.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A notification with a sound when it is low or high, changes rapidly, or stops coming.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Private</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell asks your sharing service directly. Readings stay on this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell is not a medical device</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Do not make treatment decisions by what it shows.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep the alarms of the phone or receiver switched on. A computer may be asleep, muted or offline when it matters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Setting up takes about two minutes. You need the account of Dexcom Share or LibreLinkUp.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Welcome to Tidewell</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::AccountForm</name>
    <message>
        <source>United States</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Outside the United States</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Japan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Asia and Pacific</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Australia</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Canada</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>China</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Europe</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Europe 2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>France</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Germany</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Latin America</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Russia</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>United Arab Emirates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use the account that publishes the readings: the one signed in on the phone that receives the sensor. A follower&apos;s account does not work. Sharing must be turned on in the sensor app, with at least one follower.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;User name:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User name, e-mail address, or phone number with +</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use a follower&apos;s account: the one signed in to the LibreLinkUp app. Whoever wears the sensor must have invited it in the Libre app, under the connected apps. If that is you, invite yourself. When you are not sure of the region, choose a near one: the service knows the right one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;E-mail:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>E-mail address of the follower</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Leave empty to use the stored password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Glucose service</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Region of the account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>S&amp;how password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ser&amp;vice:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Region:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Password:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::GlucoseGraphView</name>
    <message>
        <source>Displays your glucose readings over time with high and low threshold lines</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsChartView</name>
    <message>
        <source>Arrow keys go from item to item, Enter opens one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Arrow keys go from item to item, Enter keeps one selected, Escape lets it go.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Arrow keys go from item to item.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsDayDialog</name>
    <message>
        <source>← &amp;Earlier day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Earlier day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Later day →</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Later day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mean %1 %2, %3% in range, %4 readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, %1 of %2 covered</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsEpisodesModel</name>
    <message>
        <source>Below %1 %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Above %1 %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>over 2 hours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>begins after a gap</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ends in a gap</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Began</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lasted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Kind</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lowest or highest</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remarks</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsPanel</name>
    <message>
        <source>%1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: blank, readings from %2 only</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: median %2, middle half %3 to %4, middle 90% %5 to %6, %7</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ambulatory glucose profile: blank, too few days with readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ambulatory glucose profile of %1. The median is lowest at %2, %3, and highest at %4, %5.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time in ranges</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Daily curves: %1 of %2 with readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Coverage by day: %1 covered, %2 of %3 below 70%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2 covered</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Coverage by hour of the day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>: lowest from %1, %2 covered</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 to %2: %3 covered</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, longest %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, over 2 hours: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: no readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: mean %2, %3 in range, %4</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Demonstration: a week of somebody else&apos;s readings, repeated. Nothing of it is kept.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The saved readings of these days cannot be read, and are missing here: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Left out, since no sensor can have measured it: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time in range</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mean glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>GMI</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Variation (CV)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Target: at most %1%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Median</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The middle half lies from %1 to %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time active</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Dismiss</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Insights settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ambulatory glucose profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Daily curves</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A click opens a day, as do the arrow keys and Enter.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Coverage by day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Coverage by hour</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Episodes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>At least 15 minutes beyond a limit, ended by 15 minutes back. Gaps are never bridged: an episode ends where readings are missing. Double-click or Enter opens its day.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Episodes, the newest first</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 to %2, %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time in range: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mean glucose: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsReportDialog</name>
    <message>
        <source>Saving…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save &amp;as…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save report</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A4</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>US Letter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Leave empty for a page without a name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Attach the &amp;readings as CSV, in a file beside it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Kind:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Paper:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Name on the page:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>One page for the doctor: the figures, the profile and the newest days of this period. It is made on this computer, and nothing is sent anywhere.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What is saved is not encrypted: whoever can open the file can read it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The report is saved. The saved readings of these days cannot be read, and are missing in the attached file: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsWindow</name>
    <message>
        <source>The period is %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The period is %1 to %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is the demonstration, with somebody else&apos;s readings. </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pick another period.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The last day was moved too: a period cannot end before it begins.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The first day was moved too: a period cannot end before it begins.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Period:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Period</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last %1 days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From – to…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>First day of the period</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last day of the period</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save report…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Initial 3-day collection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Collection: %p%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Coverage of the latest 3 days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Coverage: %p%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Insights settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Report</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::NoteRow</name>
    <message>
        <source>Warning</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::OnboardingWindow</name>
    <message>
        <source>Step %1 of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Finish</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Continue</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Working</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cl&amp;ose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set up Tidewell</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::PeopleForm</name>
    <message>
        <source>&amp;Whose readings do you want to see?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>People who share their readings with you</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shared with %1:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsAboutPage</name>
    <message>
        <source>%1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the current reading of a continuous glucose monitor in the status area.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell is not a medical device. Readings can be late, missing or wrong, and alerts can fail. Do not decide about treatment by it, and keep the alarms of your sensor&apos;s own app or receiver on.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show &amp;terms of use…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Would an alert be seen and heard now?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What was found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Look again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Copy report</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copies what was found: no account and no readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Licences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell is free software under the Apache License, version 2.0, without warranty of any kind. It is built with the work of others:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Components and their licences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Component</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Used for</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Licence</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Readings of the demonstration</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Looking… this takes a few seconds.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nobody has looked yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing stands in the way of an alert.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What was found, the worst first:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsAccountPage</name>
    <message>
        <source>Glucose service</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nobody is signed in, so there are no readings. “Sign in…” asks for the account of your glucose service.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Service:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User name:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Region:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Person:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign &amp;out…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The account and its password are removed from this computer. No readings and no alerts come until somebody signs in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved readings stay on this computer, encrypted, and are there again after signing in with this account.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign out of %1?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign &amp;out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Also &amp;delete the saved readings of this account and person</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>E-mail:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nobody is chosen yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stored in %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not there, or it cannot be read</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Sign in…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Sign in again…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Switch account…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please wait: the account is being changed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsAlertsPage</name>
    <message>
        <source>Enable notifications in System Settings &gt; Notifications to receive glucose alerts.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Open notification settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show &amp;alerts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Low glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;High glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid &amp;fall</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rapid &amp;rise</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;No data for 15 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Repeat a low alert while the low lasts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>R&amp;epeat while a low lasts:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send &amp;test alert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Quiet hours: no alerts at these times</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fro&amp;m:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours begin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unt&amp;il:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quiet hours end</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lo&amp;w alerts all the same</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snooze</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Snooze low alerts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snoo&amp;ze high alerts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snooze rapi&amp;d-change alerts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status bar snooze actions only silence the alert categories selected above.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Both times are the same: there are no quiet hours.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>They last past midnight.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Notifications are disabled for Tidewell.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” is stored and in force. The list shows the nearest value; picking one replaces it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sending test alert</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsGeneralPage</name>
    <message>
        <source>1 hour</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 hours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is the demonstration, with somebody else&apos;s readings. What is changed here is forgotten when it ends.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start Tidewell when I &amp;log in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Graph</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time that the graph shows</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Time shown:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Language</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell speaks the language of your desktop where it knows it, and English otherwise.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What is stored where</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Everything stays on this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Account and settings, without the password:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy the path of the settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved readings, encrypted:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>C&amp;opy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy the path of the saved readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What the program keeps in mind, such as a snooze:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Co&amp;py</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy the path of the program&apos;s notes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password, and the key of the saved readings:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Default (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is stored, which the graph cannot show; the default is in force.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsGlucosePage</name>
    <message>
        <source>Display</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Unit:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low and high</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Low at or below:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low threshold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;High at or above:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High threshold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The reading and the graph change colour at these values, and low and high alerts are due at them. Both are stored in mg/dL, whichever unit is shown.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insights does not use them: its ranges are fixed, so that reports can be compared.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 mg/dL is stored and in force. The list shows the nearest value, %2; picking one replaces it.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsHistoryDialog</name>
    <message>
        <source>Save readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save readings on this computer?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What: each glucose reading that Tidewell fetches from now on for this account and person, with its value, trend and time. Nothing from before.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Where: on this computer only, encrypted. Nothing is ever uploaded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The key to them is kept here: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To stop: “Pause saving” on this page. What is saved stays until it is too old.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To delete: “Delete saved readings…” on this page. It removes the readings, and their key last.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How long readings are kept</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Keep readings for:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Readings that are older will be removed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Until now it was longer: saved readings that are older will be deleted at once.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsInsightsPage</name>
    <message>
        <source>%1 days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insights reports on readings that are saved on this computer, encrypted. Nothing is saved unless you ask for it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Pause saving</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How long readings are kept</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Keep readings for:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show &amp;Insights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deleting removes the readings and then their key; nobody can bring them back. Saving is off afterwards.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Delete saved readings…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete the readings of &amp;every account…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep readings for %1?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete all saved readings that are older than %1?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>They go at once, for this account and person, and cannot be brought back. Reports can then cover no more than %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Delete older readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete saved readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete the saved readings of every account and person, with their keys?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete all saved readings of this account and person, with their key?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>They cannot be brought back. Saving is off afterwards, and Insights begins anew. The readings on screen and at the glucose service stay.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Delete everything saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Delete saved readings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saving is on.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saving is off, and what was saved is being deleted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saving is off. Nothing is saved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The report has been available since %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The first readings were saved on %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The first readings were saved on %1; saving was last switched on on %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Read what saving means…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Resume saving…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save readings…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please wait: saved readings are being changed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsWindow</name>
    <message>
        <source>Could not save the change. %1 The settings are shown as they are stored.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tidewell settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>General</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Glucose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alerts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::SignInDialog</name>
    <message>
        <source>Saving the choice…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking the account…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in to Tidewell</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking the account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Sign in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Follow</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::TermsDialog</name>
    <message>
        <source>Please read the terms of use. Until you accept them, Tidewell asks for no readings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The terms of use have changed. Please read them. Tidewell goes on meanwhile.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Terms of use</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Accept</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Not now</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::TermsView</name>
    <message>
        <source>Terms of use</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>tidewell::TimeWindowPicker</name>
    <message>
        <source>Time window of the graph</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
