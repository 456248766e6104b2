#!/usr/bin/env python3
"""An SMTP server for tests and for try.sh: python3-aiosmtpd's, on a free port, or the one given, that it prints. Each mail
is appended to the file given, as one line of JSON: sender, recipients, headers, the decoded body and the decoded attachments
by file name.

  smtp_server.py FILE [--port N] [refuse-sender | refuse-recipient | refuse-data | hang-banner | hang-data | slow]
"""
import argparse
import asyncio
import email
import email.policy
import json
import socket

from aiosmtpd.smtp import SMTP


class Keeper:
    def __init__(self, path, fault):
        self.path, self.fault = path, fault

    async def handle_MAIL(self, server, session, envelope, address, options):
        if self.fault == "refuse-sender":
            return "550 5.7.1 avsender avvist"
        envelope.mail_from = address
        return "250 OK"

    async def handle_RCPT(self, server, session, envelope, address, options):
        if self.fault == "refuse-recipient" and not envelope.rcpt_tos:
            envelope.rcpt_tos.append(address)
            return "250 OK"
        if self.fault == "refuse-recipient":
            return "550 5.1.1 ukjent mottaker"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        if self.fault == "hang-data":
            await asyncio.sleep(3600)
        if self.fault == "slow":
            await asyncio.sleep(1.5)
        if self.fault == "refuse-data":
            return "554 5.6.0 for stor"
        mail = email.message_from_bytes(envelope.original_content, policy=email.policy.default)
        kept = {
            "sender": envelope.mail_from,
            "recipients": envelope.rcpt_tos,
            "from": mail["From"],
            "to": mail["To"],
            "subject": mail["Subject"],
            "date": mail["Date"],
            "encrypted": session.ssl is not None,
            "authenticated": session.authenticated is True,
            "body": mail.get_body().get_content(),
            "attachments": {part.get_filename(): part.get_content().decode("ascii") for part in mail.iter_attachments()},
            "types": [part.get_content_type() for part in mail.iter_attachments()],
        }
        with open(self.path, "a", encoding="utf-8") as out:
            out.write(json.dumps(kept) + "\n")
        return "250 OK"


async def serve(path, port, fault):
    listening = socket.create_server(("127.0.0.1", port))
    if fault == "hang-banner":
        print(listening.getsockname()[1], flush=True)
        await asyncio.sleep(3600)
    loop = asyncio.get_running_loop()
    server = await loop.create_server(lambda: SMTP(Keeper(path, fault), hostname="post"), sock=listening)
    print(listening.getsockname()[1], flush=True)
    await server.serve_forever()


parser = argparse.ArgumentParser()
parser.add_argument("file")
parser.add_argument("fault", nargs="?", default="")
parser.add_argument("--port", type=int, default=0)
chosen = parser.parse_args()
asyncio.run(serve(chosen.file, chosen.port, chosen.fault))
