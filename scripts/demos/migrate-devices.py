#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""The devices of the migration demo, written and looked at with Python's own plistlib.

usage: migrate-devices.py legacy|old ROOT     furnishes a device tree
       migrate-devices.py list ROOT           prints the accounts of its legacy files
       migrate-devices.py version FILE        prints the version of an accounts file
"""

import pathlib
import plistlib
import sys

DATACLASS = "com.orvane.Dataclass."
ACCOUNTS = "var/mobile/Library/Preferences/com.orvane.tallbook.plist"
MAIL = "var/mobile/Library/Mail/Accounts.plist"
EXCHANGE = "var/mobile/Library/Preferences/com.orvane.Syncora.plist"
SWITCH = "SyncoraAccountEnabledFor"


def exchange(identifier, **switches):
    return {
        "SyncoraAccountConfigurationClass": "ExchangeAccount",
        "SyncoraAccountConfigurationAccountID": identifier,
        "SyncoraAccountDescription": identifier.replace("-", " ").capitalize(),
        "Host": "ex.firm.example",
    } | {SWITCH + name: on for name, on in switches.items()}


def mail(class_name, identifier, **more):
    return {"AccountType": class_name, "uniqueId": identifier,
            "AccountName": identifier.replace("-", " ").capitalize()} | more


def account(identifier, kind, class_name, name, enabled=None, **more):
    record = {"Type": kind, "Class": class_name, "DisplayName": name} | more
    if identifier:
        record["Identifier"] = identifier
    if enabled is not None:
        record["Enabled Dataclasses"] = [DATACLASS + each for each in enabled.split()]
    return record


def legacy():
    """A device of the first release: most accounts stand in a mail file and an Exchange file."""
    return {
        ACCOUNTS: {"Version": 0, "Accounts": [
            account("directory", "LDAP", "LDAPAccount", "Directory", "ContactsSearch"),
            account("feed", "Subscribed Calendar", "SubscribedCalendar", "Feed", "Calendars"),
        ]},
        MAIL: {
            "DeliveryAccounts": [
                {"uniqueId": "smtp-uni", "AccountName": "Uni (out)", "Hostname": "smtp.uni.example"},
                {"uniqueId": "smtp-net", "AccountName": "Net (out)", "Hostname": "smtp.net.example",
                 "AccountType": "SMTPAccount"},
            ],
            "MailAccounts": [
                mail("GmailAccount", "gmail", Username="ada@gmail.com"),
                mail("YahooAccount", "yahoo", Username="ada.y"),
                mail("IMAPAccount", "university", Hostname="imap.uni.example", Username="al123"),
                mail("POPAccount", "provider", Hostname="pop.net.example", IsActive=False),
                mail("VeltroAccount", "veltro", Username="ada@veltro.example", IsActive=True),
                mail("MorwickIMAPAccount", "nimbrel-mail", Username="ada"),
                mail("SyncoraMailAccount", "mail-over-exchange", Username="ada"),
            ],
        },
        EXCHANGE: {"SyncoraAccountsKey": [
            exchange("no-switch"),
            exchange("all-on", Calendar=True, Contacts=True, Email=True, ContactsSearch=True),
            exchange("all-off", Calendar=False, Contacts=False, Email=False, ContactsSearch=False),
            exchange("no-calendar", Calendar=False),
            exchange("no-contacts", Contacts=False),
            exchange("no-email", Email=False),
            exchange("no-search", ContactsSearch=False),
            exchange("email-alone", Calendar=False, Contacts=False, ContactsSearch=False),
            exchange("odd-switch", Calendar="off"),
        ]},
    }


def cal_dav(identifier, name, server, login, path):
    return account(
        identifier, "CalDAV", "MobileCalDAVAccount", name, "Calendars",
        CalDAVPrincipalConfiguration={"Login_Key": login, "CalDAV_Server_Key": server},
        CalDAVAccountConfiguration={"CalDAV_PrincipalPath_Key": path})


def old():
    """A device whose accounts file is of version 0, with whatever any version step touches."""
    accounts = [
        account("before", "OnMyDevice", "DeviceLocalAccount", "On this device", "Notes"),
        account("old-imap", "Mail", "IMAPAccount", "University", uniqueId="imap"),
        account("gmail", "Mail", "GmailAccount", "Gmail", Username="ada@gmail.com"),
        cal_dav("gmail-cal", "Gmail calendar", "www.google.com", "ada",
                "/calendar/dav/ada%40gmail.com/user"),
        account("yahoo", "Mail", "YahooAccount", "Yahoo", Username="ada.y"),
        cal_dav("yahoo-cal", "Yahoo calendar", "caldav.calendar.yahoo.com", "ada.y",
                "/principals/users/ada.y"),
        cal_dav("family", "Family", "dav.family.example", "ada", "/principals/users/ada"),
        account("aol", "Mail", "AOLAccount", "Switched off", "", IsActive=False),
        account("pop", "Mail", "POPAccount", "Provider"),
        account("work", "Exchange", "ExchangeAccount", "Work", "Mail Calendars Notes"),
        account("veltro", "Veltro", "VeltroAccount", "Veltro mail", "Mail Calendars Notes",
                Username="ada", IsActive=True, ChildAccounts=[
                    account("veltro-cal", "CalDAV", "CalDAVAccount", "Veltro calendars")]),
        account("pendrel", "Veltro", "PendrelAccount", "Pendrel mail", "Mail Notes",
                Username="ada@pendrel.example", IsActive=False),
        account("primary", "OrvaneAccount", "OAAccount", "Veltro", "DeviceLocator Bookmarks",
                accountStatus=2),
        account("second", "OrvaneAccount", "OAAccount", "Second", "Mail Ubiquity KeyValue",
                accountStatus=2, ChildAccounts=[
                    account("second-mail", "Veltro", "VeltroAccount", "A name of its own"),
                    account("second-cal", "CalDAV", "CalDAVAccount", "Second calendars")],
                **{"Provisioned Dataclasses": [DATACLASS + "Contacts"]}),
        account("third", "OrvaneAccount", "OAAccount", "Third", "Calendars Reminders",
                accountStatus=1),
        account(None, "SMTP", "SMTPAccount", "Without identifier", Hostname="smtp.uni.example"),
        account("mailbox", "Mail", "MailAccount", "Class from path",
                AccountPath="~/Library/Mail/POP-al@pop.net.example"),
        account("lost", "Mail", "MailAccount", "Class unknown"),
        account("future", "Hologram", "HologramAccount", "Type unknown"),
        account("ldap", "LDAP", "LDAPAccount", "Directory", "ContactsSearch"),
        account("holidays", "Subscribed Calendar", "SubscribedCalendar", "Holidays", "Calendars"),
    ]
    return {
        ACCOUNTS: {"Version": 0, "Accounts": accounts},
        # A phone whose calendars a computer syncs.
        "etc/tallbook/DeviceInformation.plist": {"DeviceClass": "Phone"},
        "etc/tallbook/SyncSources.plist": {"Calendars": ["DenyTethered"]},
    }


def write(root, files):
    for relative, content in files.items():
        path = root / relative
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(plistlib.dumps(content, sort_keys=False))


def legacy_accounts(root):
    """One line an account: file, class, name, and the Exchange switches that are set."""
    for relative, keys in ((MAIL, ("DeliveryAccounts", "MailAccounts")),
                           (EXCHANGE, ("SyncoraAccountsKey",))):
        content = plistlib.loads((root / relative).read_bytes())
        for description in (each for key in keys for each in content[key]):
            class_name = description.get("AccountType",
                                         description.get("SyncoraAccountConfigurationClass", "-"))
            name = description.get("AccountName", description.get("SyncoraAccountDescription"))
            switches = [f"{key.removeprefix(SWITCH)}={value}"
                        for key, value in description.items() if key.startswith(SWITCH)]
            yield f"{pathlib.Path(relative).name:28}{class_name:20}{name:20}{' '.join(switches)}"


def main():
    match sys.argv[1:]:
        case ["legacy", root]:
            write(pathlib.Path(root), legacy())
        case ["old", root]:
            write(pathlib.Path(root), old())
        case ["list", root]:
            print(*legacy_accounts(pathlib.Path(root)), sep="\n")
        case ["version", file]:
            print(plistlib.loads(pathlib.Path(file).read_bytes())["Version"])
        case _:
            sys.exit(__doc__)


if __name__ == "__main__":
    main()
