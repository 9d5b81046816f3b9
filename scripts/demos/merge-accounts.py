#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Furnishes a device tree for the merge demo: a dozen accounts, and a notifier for all of their types.

usage: merge-accounts.py ROOT MODULE

ROOT is the device tree, MODULE the path below it of the module with the example classes. The
accounts file is written by Python's own plistlib, so what the library reads here it did not write.
"""

import pathlib
import plistlib
import sys

DATACLASS = "com.orvane.Dataclass."
ACCOUNTS = "var/mobile/Library/Preferences/com.orvane.tallbook.plist"
DROP_IN = "usr/share/tallbook/AccountCreators.d/example.plist"

ALL_DATACLASSES = [
    DATACLASS + name
    for name in (
        "Mail Contacts Calendars Reminders Bookmarks Notes MediaStream DeviceLocator "
        "ContactsSearch Backup Ubiquity KeyValue Pouchet SharedStreams"
    ).split()
]


def account(identifier, kind, name, enabled, **more):
    record = {
        "Identifier": identifier,
        "Sync Identifier": identifier,
        "Type": kind,
        "Class": kind.replace(" ", "") + "Account",
        "DisplayName": name,
        "Enabled Dataclasses": [DATACLASS + dataclass for dataclass in enabled.split()],
    }
    if kind == "OnMyDevice":
        record["Class"] = "DeviceLocalAccount"
    return record | more


def accounts():
    return [
        account("DeviceLocalAccount", "OnMyDevice", "On My Device", "Contacts Calendars Notes"),
        account(
            "UMBRELLA-1", "OrvaneAccount", "Orvane", "Mail Contacts Calendars Reminders Backup",
            Username="ada@orvane.example",
            ChildAccounts=[
                account("UMBRELLA-1-MAIL", "MorwickIMAP", "Orvane Mail", "Mail",
                        Hostname="imap.orvane.example", Port=993, SSLEnabled=True),
                account("UMBRELLA-1-CAL", "CalDAV", "Orvane Calendars", "Calendars Reminders",
                        Host="cal.orvane.example"),
                account("UMBRELLA-1-CARD", "CardDAV", "Orvane Contacts", "Contacts",
                        Host="card.orvane.example"),
            ],
        ),
        account("WORK", "Exchange", "Work", "Mail Contacts Calendars",
                Username="ada", Host="ex.firm.example", DaysToSync=7, SSLEnabled=True),
        account("FIRM-OLD", "Exchange", "Former firm", "Contacts",
                Username="ada.l", Host="old.example", DaysToSync=30),
        account("GMAIL", "Gmail", "Gmail", "Mail Notes", Username="ada@mail.example"),
        account("YAHOO", "Yahoo", "Yahoo", "Mail", Username="ada.y"),
        account("IMAP", "Mail", "University", "Mail", Class="IMAPAccount",
                Hostname="imap.uni.example", Port=993, Username="al123"),
        account("POP", "Mail", "Provider", "Mail", Class="POPAccount",
                Hostname="pop.net.example", Port=995, Username="al",
                ChildAccounts=[account("POP-NOTES", "IMAPNotes", "Provider Notes", "Notes")]),
        account("SMTP", "SMTP", "Outgoing", "", Hostname="smtp.uni.example", Port=587),
        account("CALDAV", "CalDAV", "Family", "Calendars Reminders",
                Host="dav.family.example", Username="ada"),
        account("HOLIDAYS", "Subscribed Calendar", "Holidays", "Calendars",
                SubscriptionURL="https://calendars.example/holidays.ics"),
        account("LDAP", "LDAP", "Directory", "ContactsSearch", Host="ldap.uni.example"),
    ]


def creators(module):
    """The example classes as further creators of every account type."""
    resources = pathlib.Path(__file__).resolve().parents[2] / "resources"
    types = plistlib.loads((resources / "AccountTypesProperties.plist").read_bytes())

    def entry(role, name, **more):
        return {"Type": role, "Description": {"Framework": module, "Class": name} | more}

    return {
        kind: [
            entry("FullAccount", "ExampleFullAccountCreator"),
            entry("SyncAccount", "ExampleSyncAccountCreator"),
            entry("NotifierAccount", "ExampleNotifier",
                  **{"Supported Dataclasses": ALL_DATACLASSES}),
        ]
        for kind in types
    }


def write(path, content):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(plistlib.dumps(content, fmt=plistlib.FMT_BINARY, sort_keys=False))


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: merge-accounts.py ROOT MODULE")
    root = pathlib.Path(sys.argv[1])
    write(root / ACCOUNTS, {"Version": 12, "Accounts": accounts()})
    write(root / DROP_IN, creators(sys.argv[2]))


if __name__ == "__main__":
    main()
