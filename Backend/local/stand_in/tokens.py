"""JSON Web Tokens: HS256 with one secret and nothing else."""

import base64
import hmac
import json
import re

from .errors import bad_token

# Seconds by which the clocks of the signer and of this machine may differ.
TOLERATED = 30


def sign(text, secret):
    """The signature of a token's first two parts, in the form of its third part."""
    return base64.urlsafe_b64encode(hmac.digest(secret.encode(), text.encode(), "sha256")).rstrip(b"=")


def _object_in(segment):
    """The JSON object of a part, and its text."""
    try:
        text = base64.urlsafe_b64decode(segment + "=" * (-len(segment) % 4)).decode()
        content = json.loads(text)
    except (ValueError, RecursionError):
        content = None
    if not isinstance(content, dict) or re.search("[^A-Za-z0-9_-]", segment):
        raise bad_token("JWT cannot be decoded")
    return content, text


def verify(token, secret, now):
    """The role that a token gives at `now`, in seconds, and its claims as JSON. A token without a role is anonymous."""
    parts = token.split(".")
    if len(parts) != 3:
        raise bad_token("JWT must have three parts")
    # This server chooses the algorithm: a token with another one, above all "none", is refused.
    if _object_in(parts[0])[0].get("alg") != "HS256":
        raise bad_token("JWT must be signed with HS256")
    if not hmac.compare_digest(sign(f"{parts[0]}.{parts[1]}", secret), parts[2].encode()):
        raise bad_token("JWT has a wrong signature")
    claims, text = _object_in(parts[1])
    role, end, start = claims.get("role", "anon"), claims.get("exp", now), claims.get("nbf", now)
    if not isinstance(role, str) or {type(end), type(start)} - {int, float}:
        raise bad_token("JWT claims cannot be read")
    if end + TOLERATED < now:
        raise bad_token("JWT expired")
    if start - TOLERATED > now:
        raise bad_token("JWT not yet valid")
    return role, text
