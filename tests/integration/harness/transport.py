"""What the AVTransport tests of every control point share: time texts, track metadata, and the order of
transport states that a play-pause-seek-stop session must show."""

from xml.sax.saxutils import escape, quoteattr

# A session's transport states once TRANSITIONING is left out and repeats are merged.
SESSION_STATES = ["PLAYING", "PAUSED_PLAYBACK", "STOPPED"]


def parse_time(text):
    """Seconds of an AVTransport time text "H+:MM:SS[.F]"; None for anything else (NOT_IMPLEMENTED, "")."""
    parts = (text or "").split(":")
    if len(parts) != 3:
        return None
    try:
        return int(parts[0]) * 3600 + int(parts[1]) * 60 + float(parts[2].split("/")[0])
    except ValueError:
        return None


def didl_lite(title, url, content_type):
    """DIDL-Lite metadata of one music track, as a control point sends it with SetAVTransportURI."""
    return ('<DIDL-Lite xmlns="urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/" '
            'xmlns:dc="http://purl.org/dc/elements/1.1/" '
            'xmlns:upnp="urn:schemas-upnp-org:metadata-1-0/upnp/">'
            '<item id="1" parentID="0" restricted="1"><dc:title>%s</dc:title>'
            '<upnp:class>object.item.audioItem.musicTrack</upnp:class>'
            '<res protocolInfo=%s>%s</res></item></DIDL-Lite>'
            % (escape(title), quoteattr("http-get:*:%s:*" % content_type), escape(url)))


def reduced_states(states):
    """The states without TRANSITIONING, each run of one state merged into one entry."""
    reduced = []
    for state in states:
        if state != "TRANSITIONING" and (not reduced or reduced[-1] != state):
            reduced.append(state)
    return reduced


def check_session_states(test, states):
    """The TransportState values evented from Play on must be TRANSITIONING?, PLAYING, PAUSED_PLAYBACK, ...,
    STOPPED: a transition may be evented, the three steps must come in this order and nothing else between."""
    test.assertTrue(states, "no TransportState was evented after Play")
    test.assertIn(states[0], ("TRANSITIONING", "PLAYING"), "the first state after Play: %r" % states)
    test.assertEqual(reduced_states(states), SESSION_STATES, "TransportState events: %r" % states)
