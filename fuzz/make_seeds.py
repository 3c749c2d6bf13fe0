#!/usr/bin/env python3
"""Writes the seed corpus of every fuzz target into fuzz/corpus/<target>/.

The text targets get documents as a control point, a media server or a hand-edited file would send them.
The targets that read their input as a script (support/FuzzScript.h) get scripts of meaningful sessions,
encoded the way FuzzedDataProvider reads them: numbers and choices are taken one byte at a time from the
end of the input, texts from the front (a text ends at a backslash followed by another character). The
word indexes below follow the word lists of each target; when a list changes, change them here and run
this again (the fuzzer finds its way from stale seeds too, only slower).

Run: fuzz/make_seeds.py   (rewrites the seeds; the committed corpus is its output)
"""
import os
import shutil

HERE = os.path.dirname(os.path.abspath(__file__))
CORPUS = os.path.join(HERE, "corpus")


class Script:
    """The bytes of a script input: texts read from the front, choices from the back."""

    def __init__(self):
        self.front = bytearray()
        self.back = []  # in the order the target takes them

    def byte(self, value):
        self.back.append(value & 0xFF)

    def flag(self, value):
        self.byte(1 if value else 0)

    def text(self, value):
        """An arbitrary text (FuzzScript::Text)."""
        for c in value.encode("utf-8"):
            if c == 0x5C:
                self.front += b"\\\\"
            else:
                self.front.append(c)
        self.front += b"\\;"

    def pick_text(self, value):
        """FuzzScript::Pick taking its arbitrary-text branch."""
        self.byte(255)
        self.text(value)

    def number32(self, value):
        """FuzzScript::Number<uint32_t>: four bytes, the most significant taken first."""
        for shift in (24, 16, 8, 0):
            self.byte(value >> shift)

    def signed32(self, value):
        """FuzzScript::Number<int32_t>: the range's low end plus four bytes."""
        self.number32(value + (1 << 31))

    def data(self):
        return bytes(self.front) + bytes(reversed(self.back))


def write(target, name, data):
    folder = os.path.join(CORPUS, target)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as seed:
        seed.write(data if isinstance(data, bytes) else data.encode("utf-8"))


# ---- The two service objects (ActionScript.cpp, FuzzTransferService.cpp) ----

# kValues of ActionScript.cpp.
V_0, V_1, V_EMPTY, V_MINUS_1, V_TRUE, V_YES, V_0X10 = 0, 1, 2, 5, 7, 9, 17
V_NORMAL, V_SHUFFLE, V_REL_TIME, V_TEN_SECONDS = 21, 23, 24, 27
V_URI_A, V_URI_B, V_DIDL, V_SPECIAL = 29, 30, 31, 32
# kTexts of FuzzTransferService.cpp.
T_PLAYING, T_STOPPED, T_PAUSED = 3, 4, 5
# kAnswers of FuzzTransferService.cpp: the choice byte that gives each (choice % 19, from 160 on).
ANSWER = {402: 171, 701: 172, 705: 173, 710: 174, 711: 175, 712: 176, 714: 177, 718: 181, 401: 182, 501: 183,
          -1: 186}


def action(script, service, name, arguments, kind=0):
    """One PerformAction step: `arguments` are (name index, value index or text) pairs."""
    script.byte(kind)
    script.byte(0x11)  # a service type and an action name
    script.byte(service)
    script.byte(name)
    script.byte(len(arguments))
    for argument, value in arguments:
        script.byte(argument)
        if isinstance(value, str):
            script.pick_text(value)
        else:
            script.byte(value)


def answer(script, code=0, report=None):
    """The application's answer to a command, and the state it reports (a kTexts index) or none."""
    script.byte(ANSWER[code] if code else 0)
    if report is None:
        script.byte(0)
    else:
        script.byte(200)
        script.byte(0)  # the transport state
        script.byte(report)


def query(script, outs, code=0):
    """A query's OUT strings left as they came, then its answer."""
    for _ in range(outs):
        script.flag(True)
    script.byte(ANSWER[code] if code else 0)


# SinkCTSSActionFuzzer.cpp: service types, actions, arguments.
AVT, CMS = 0, 1
(SET_URI, GET_MEDIA_INFO, GET_TRANSPORT_INFO, GET_POSITION_INFO, GET_DEVICE_CAPABILITIES, GET_TRANSPORT_SETTINGS,
 GET_CURRENT_TRANSPORT_ACTIONS, STOP, PLAY, PAUSE, SEEK, NEXT, PREVIOUS, GET_PROTOCOL_INFO, GET_CONNECTION_IDS,
 GET_CONNECTION_INFO, SET_PLAY_MODE, SET_NEXT_URI, RECORD) = range(19)
A_INSTANCE, A_SPEED, A_URI, A_METADATA, A_UNIT, A_TARGET, A_MODE, A_CONNECTION = range(8)


def sinkctss_seeds():
    # Play a track through: set it, play, ask where it is, pause, seek, stop.
    s = Script()
    action(s, AVT, SET_URI, [(A_INSTANCE, V_0), (A_URI, V_URI_A), (A_METADATA, V_DIDL)])
    answer(s, report=T_STOPPED)
    action(s, AVT, PLAY, [(A_INSTANCE, V_0), (A_SPEED, V_1)])
    answer(s, report=T_PLAYING)
    action(s, AVT, GET_TRANSPORT_INFO, [(A_INSTANCE, V_0)])
    query(s, 3)
    action(s, AVT, GET_POSITION_INFO, [(A_INSTANCE, V_0)])
    query(s, 8)
    action(s, AVT, PAUSE, [(A_INSTANCE, V_0)])
    answer(s, report=T_PAUSED)
    action(s, AVT, SEEK, [(A_INSTANCE, V_0), (A_UNIT, V_REL_TIME), (A_TARGET, V_TEN_SECONDS)])
    answer(s)
    action(s, AVT, STOP, [(A_INSTANCE, V_0)])
    answer(s, report=T_STOPPED)
    s.byte(230)  # GetStateVariable: the full LastChange
    s.byte(AVT)
    s.byte(0)
    write("sinkctss_action", "play-a-track", s.data())

    # The application refuses: numbers the actions may report, and numbers they may not.
    s = Script()
    action(s, AVT, PLAY, [(A_INSTANCE, V_0), (A_SPEED, V_1)])
    answer(s, 701)
    action(s, AVT, SEEK, [(A_INSTANCE, V_0), (A_UNIT, V_REL_TIME), (A_TARGET, V_TEN_SECONDS)])
    answer(s, 710)
    action(s, AVT, SET_PLAY_MODE, [(A_INSTANCE, V_0), (A_MODE, V_SHUFFLE)])
    answer(s, 712)
    action(s, AVT, SET_URI, [(A_INSTANCE, V_0), (A_URI, V_URI_B)])
    answer(s, 701)
    action(s, AVT, NEXT, [(A_INSTANCE, V_0)])
    answer(s, -1)
    action(s, AVT, GET_MEDIA_INFO, [(A_INSTANCE, V_0)])
    query(s, 9, 718)
    write("sinkctss_action", "application-errors", s.data())

    # What a careless or hostile control point sends.
    s = Script()
    action(s, AVT, PLAY, [(A_INSTANCE, V_0)])  # no Speed: 402
    action(s, AVT, PLAY, [(A_INSTANCE, V_1), (A_SPEED, V_1)])  # 718
    action(s, AVT, RECORD, [(A_INSTANCE, V_0)])  # 401
    action(s, AVT, PLAY, [(A_SPEED, V_1), (A_INSTANCE, V_0), (A_INSTANCE, V_1)])
    answer(s)
    action(s, CMS, GET_CONNECTION_INFO, [(A_CONNECTION, V_0)])
    query(s, 7)
    action(s, CMS, GET_PROTOCOL_INFO, [])
    query(s, 2)
    action(s, CMS, GET_CONNECTION_IDS, [])
    query(s, 1)
    action(s, AVT, STOP, [(A_INSTANCE, V_0)], kind=220)  # a zero handle
    action(s, AVT, STOP, [(A_INSTANCE, V_0)], kind=221)  # no request
    s.byte(250)  # WarnTimeOut
    s.number32(7)
    s.byte(0)
    write("sinkctss_action", "careless-control-point", s.data())

    # Queries whose OUT strings the application fills with texts that need escaping.
    s = Script()
    action(s, AVT, GET_MEDIA_INFO, [(A_INSTANCE, V_0)])
    for text in (1, 0, 18, 21, 18, 22, 11, 13, 13):
        s.flag(False)
        s.byte(text)
    s.byte(0)
    action(s, AVT, GET_CURRENT_TRANSPORT_ACTIONS, [(A_INSTANCE, V_0)])
    s.flag(False)
    s.byte(20)
    s.byte(0)
    write("sinkctss_action", "queries-filled", s.data())


# OpenHomeActionFuzzer.cpp: service types, actions, arguments.
PLAYLIST, PRODUCT, TIME, INFO, SENDER = range(5)
(INSERT, DELETE_ID, DELETE_ALL, OH_STOP, OH_PLAY, OH_PAUSE, SEEK_SECOND, OH_NEXT, OH_PREVIOUS, SEEK_ID, SEEK_INDEX,
 REPEAT, SET_REPEAT, SHUFFLE, SET_SHUFFLE, ID, TRANSPORT_STATE, READ, READ_LIST, STANDBY, SET_STANDBY, SOURCE_XML,
 SET_SOURCE_INDEX, ID_ARRAY, TRACKS_MAX, MANUFACTURER, MODEL, PRODUCT_ACTION, SOURCE_INDEX, TRACK, DETAILS,
 METATEXT, TIME_ACTION, PRESENTATION_URL) = range(34)
B_AFTER_ID, B_URI, B_METADATA, B_VALUE, B_ID_LIST = range(5)


def insert(script, after, uri, first=False):
    action(script, PLAYLIST, INSERT, [(B_AFTER_ID, after), (B_URI, uri), (B_METADATA, V_DIDL)])
    if first:  # the first track of an empty playlist goes to the transport
        answer(script)


def openhome_seeds():
    # Build a playlist, play its second track, delete it while playing, read what is left.
    s = Script()
    insert(s, V_0, V_URI_A, first=True)
    insert(s, V_1, V_URI_B)
    insert(s, "2", "http://127.0.0.1:9/c.ogg")
    action(s, PLAYLIST, SEEK_ID, [(B_VALUE, "2")])
    answer(s)
    answer(s, report=T_PLAYING)
    action(s, PLAYLIST, DELETE_ID, [(B_VALUE, "2")])
    answer(s, report=T_STOPPED)
    answer(s)
    answer(s, report=T_PLAYING)
    action(s, PLAYLIST, READ_LIST, [(B_ID_LIST, "1 3 3 2 99")])
    action(s, PLAYLIST, ID_ARRAY, [])
    action(s, PLAYLIST, READ, [])
    action(s, PLAYLIST, TRANSPORT_STATE, [])
    s.byte(230)  # GetStateVariable Playlist IdArray
    s.byte(PLAYLIST)
    s.byte(0)
    write("openhome_action", "playlist-session", s.data())

    # Shuffle and repeat, then walk the playlist both ways.
    s = Script()
    insert(s, V_0, V_URI_A, first=True)
    insert(s, V_1, V_URI_B)
    insert(s, V_0, V_SPECIAL)
    action(s, PLAYLIST, SET_REPEAT, [(B_VALUE, V_TRUE)])
    action(s, PLAYLIST, SET_SHUFFLE, [(B_VALUE, V_YES)])
    s.byte(7)  # the shuffle's seed
    for step in (OH_NEXT, OH_NEXT, OH_PREVIOUS, OH_NEXT):
        action(s, PLAYLIST, step, [])
        s.byte(9)  # a seed, should the step reshuffle
        answer(s)
        answer(s, report=T_PLAYING)
    action(s, PLAYLIST, SET_SHUFFLE, [(B_VALUE, "TRUE")])
    action(s, PLAYLIST, SHUFFLE, [])
    action(s, PLAYLIST, REPEAT, [])
    write("openhome_action", "shuffle-and-repeat", s.data())

    # A full playlist: one more Insert is refused; then everything goes.
    s = Script()
    s.byte(250)  # fill straight into the playlist
    s.byte(250)  # 4 x 250
    s.byte(3)  # + 3 = 1003 tries
    insert(s, V_0, V_URI_A)
    action(s, PLAYLIST, TRACKS_MAX, [])
    action(s, PLAYLIST, SEEK_INDEX, [(B_VALUE, "1000")])
    answer(s)
    answer(s)
    action(s, PLAYLIST, DELETE_ALL, [])
    answer(s)
    answer(s)
    write("openhome_action", "full-playlist", s.data())

    # The Product, Info and Time services and the Sender actions nobody serves.
    s = Script()
    for name in (STANDBY, SOURCE_XML, SOURCE_INDEX, MANUFACTURER, MODEL, PRODUCT_ACTION):
        action(s, PRODUCT, name, [])
    action(s, PRODUCT, SET_STANDBY, [(B_VALUE, V_TRUE)])
    action(s, PRODUCT, SET_SOURCE_INDEX, [(B_VALUE, V_0)])
    for name in (TRACK, DETAILS, METATEXT):
        action(s, INFO, name, [])
    action(s, TIME, TIME_ACTION, [])
    action(s, SENDER, PRESENTATION_URL, [])
    action(s, PLAYLIST, OH_PLAY, [])  # nothing to play
    answer(s)
    write("openhome_action", "product-info-time", s.data())


def playlist_sequence_seeds():
    # PlaylistSequenceFuzzer.cpp: operation bytes, ids chosen by ChooseId (first, last, current, any).
    def insert_op(s, after_choice, uri=0, metadata=0):
        s.byte(0)
        s.byte(after_choice)
        s.byte(uri)
        s.byte(metadata)

    first, last, current, zero, negative = 0, 1, 2, 160, 192
    s = Script()
    insert_op(s, zero)
    insert_op(s, last, 2, 2)
    insert_op(s, first, 1, 1)
    s.byte(5)  # SeekIdTrackData of the last
    s.byte(last)
    s.byte(7)  # Next
    s.byte(9)  # Prev
    s.byte(1)  # DeleteId of the current one
    s.byte(current)
    s.byte(10)  # CheckNext
    s.byte(1)  # DeleteId of a negative id
    s.byte(negative)
    s.byte(2)  # DeleteAll
    insert_op(s, zero)
    write("playlist_sequence", "edit-and-walk", s.data())

    s = Script()
    for _ in range(5):
        insert_op(s, last)
    s.byte(11)  # SetRepeat(1)
    s.flag(True)
    s.byte(1)
    s.byte(12)  # SetShuffle(1)
    s.flag(True)
    s.byte(1)
    s.byte(3)  # its seed
    for _ in range(6):
        s.byte(7)  # Next, through the end of the shuffled order
        s.byte(11)
    s.byte(1)  # DeleteId of the first (reshuffles)
    s.byte(first)
    s.byte(5)
    s.byte(8)  # GetNextTrackData
    s.byte(13)  # ShufflePlaylist(2)
    s.flag(True)
    s.byte(3)
    s.byte(12)
    s.byte(12)  # SetShuffle(0)
    s.flag(True)
    s.byte(0)
    s.byte(12)  # SetShuffle(7): refused
    s.flag(False)
    s.signed32(7)
    write("playlist_sequence", "shuffle-repeat", s.data())

    s = Script()
    s.byte(14)  # fill to the limit and beyond
    s.byte(250)
    s.byte(3)
    insert_op(s, zero)
    s.byte(4)  # SeekIndexTrackData(1000)
    s.flag(False)
    s.signed32(1000)
    s.byte(7)  # Next at the end
    s.byte(1)  # DeleteId of the last
    s.byte(last)
    insert_op(s, current)
    write("playlist_sequence", "full", s.data())


def read_list_seeds():
    # ReadListFuzzer.cpp: where ids start, how many tracks with which metadata, then the IdList.
    for name, start, metadata, id_list in (
        ("ids-from-1", 0, [1, 2, 0], "1 3 3 2 99"),
        ("blanks-and-junk", 0, [2, 3], "  1 x2 2abc -1 0x2 +2 "),
        ("ids-near-2-31", 1, [1, 1, 1, 1], "2147483645 2147483646 2147483647 2147483648 -2147483648"),
        ("ids-near-2-32", 2, [2, 2, 2, 2], "4294967293 4294967294 4294967295 4294967296 -3 -2"),
    ):
        s = Script()
        s.byte(start)
        s.byte(len(metadata))
        for index in metadata:
            s.byte(index)
        s.text(id_list)
        write("read_list", name, s.data())


DIDL = ('<DIDL-Lite xmlns="urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/" xmlns:dc="http://purl.org/dc/elements/1.1/" '
        'xmlns:upnp="urn:schemas-upnp-org:metadata-1-0/upnp/">'
        '<item id="64$0$1" parentID="64$0" restricted="1"><dc:title>Caf&#233; &amp; Bar</dc:title>'
        '<dc:creator>Someone</dc:creator><upnp:artist role="Performer">A Band</upnp:artist>'
        '<upnp:album>An Album</upnp:album><upnp:genre>Jazz</upnp:genre>'
        '<upnp:albumArtURI dlna:profileID="JPEG_TN" xmlns:dlna="urn:schemas-dlna-org:metadata-1-0/">'
        'http://127.0.0.1:9/art.jpg</upnp:albumArtURI>'
        '<upnp:class>object.item.audioItem.musicTrack</upnp:class>'
        '<res protocolInfo="http-get:*:audio/flac:*" duration="0:03:25.000" size="12345678" bitrate="176400" '
        'sampleFrequency="44100" nrAudioChannels="2" bitsPerSample="16">http://127.0.0.1:9/a.flac</res>'
        '<res protocolInfo="http-get:*:audio/mpeg:*">http://127.0.0.1:9/a.mp3</res></item></DIDL-Lite>')


def text_seeds():
    write("last_change", "avt-document",
          '\x00<Event xmlns="urn:schemas-upnp-org:metadata-1-0/AVT/"><InstanceID val="0">'
          '<TransportState val="PLAYING"/><CurrentTrackURI val="http://127.0.0.1:9/a.flac?x=1&amp;y=2"/>'
          '<AVTransportURIMetaData val="&lt;DIDL-Lite&gt;&#9;&#10;&lt;/DIDL-Lite&gt;"/></InstanceID></Event>')
    write("last_change", "rcs-prefixed-channels",
          '\x01<?xml version="1.0"?>\r\n<e:Event xmlns:e="urn:schemas-upnp-org:metadata-1-0/RCS/">\n'
          '  <e:InstanceID val=" 0 ">\n    <e:Volume channel="Master" val="50"/>\n'
          '    <e:Volume channel="LF" val="40"/><e:Mute val="0"/>\n  </e:InstanceID>\n'
          '  <e:InstanceID val="1"/><e:InstanceID val="-1"><e:Volume val="1"/></e:InstanceID>\n</e:Event>')
    write("last_change", "entity-expansion",
          '\x00<!DOCTYPE Event [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;">]>'
          '<Event><InstanceID val="0"><A val="&b;"/></InstanceID></Event>')
    # Built with SetStateVariable: a value that is not UTF-8 once made the document unreadable.
    write("last_change", "regression-value-not-utf8", b"\xb3\x46\xd0\x5b")

    write("media_metadata", "music-track", DIDL)
    write("media_metadata", "no-wrapper-undeclared-prefixes",
          '<item><dc:title>Bare</dc:title><upnp:class>object.item.audioItem</upnp:class>'
          '<res protocolInfo="http-get:*:audio/mpeg:*">http://127.0.0.1:9/b.mp3</res></item>')
    write("media_metadata", "container-then-replaced",
          '<DIDL-Lite><container id="1"><dc:title>Folder</dc:title></container></DIDL-Lite>\x00   ')

    write("properties", "renderer-conf",
          "# renderer configuration\nsinkctss.protocolInfo_0 = http-get:*:audio/flac:*\n"
          "sinkctss.protocolInfo_1=http-get:*:audio/mpeg:*\r\n\n  device.docroot  =  /usr/share/open-renderer  \n"
          "friendlyName=Kitchen = Speaker\nempty=\n")
    write("properties", "malformed-line", "a=1\nno equals sign here\nb=2\n")

    for name, text in (("flac", "http-get:*:audio/flac:*"),
                       ("dlna-info", "  http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01:x  "),
                       ("comma", "http-get:*:audio/a,b:*"),
                       ("three-fields", "http-get:*:audio/flac")):
        write("protocol_info", name, text)

    write("convert_control_character", "specials", b"\x00\x01&<>\"'")
    write("convert_control_character", "near-the-limit", b"\x0a\x00<a href=\"x\">&amp;</a>")
    write("convert_control_character", "plain", b"\x00\x00caf\xc3\xa9 plain text")

    envelope = ('<?xml version="1.0" encoding="utf-8"?>\n<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/" '
                's:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/"><s:Body>{}</s:Body></s:Envelope>')
    write("soap_request", "set-uri", envelope.format(
        '<u:SetAVTransportURI xmlns:u="urn:schemas-upnp-org:service:AVTransport:1"><InstanceID>0</InstanceID>'
        '<CurrentURI>http://127.0.0.1:9/a.flac?x=1&amp;y=2</CurrentURI>'
        '<CurrentURIMetaData><![CDATA[<DIDL-Lite/>]]></CurrentURIMetaData></u:SetAVTransportURI>'))
    write("soap_request", "insert-with-header", envelope.replace("<s:Body>", "<s:Header><x>1</x></s:Header><s:Body>")
          .format('<u:Insert xmlns:u="urn:av-openhome-org:service:Playlist:1"><AfterId>0</AfterId>'
                  '<Uri>http://127.0.0.1:9/a.flac</Uri><Metadata>&lt;DIDL-Lite/&gt;</Metadata><!-- c --></u:Insert>'))
    write("soap_request", "doctype", '<!DOCTYPE x [<!ENTITY a "b">]>' + envelope.format(
        '<u:Play xmlns:u="urn:schemas-upnp-org:service:AVTransport:1"><Speed>&a;</Speed></u:Play>'))
    write("soap_request", "no-namespace", envelope.format('<Play><InstanceID>0</InstanceID></Play>'))

    write("playlist_file", "two-tracks",
          '<?xml version="1.0" encoding="utf-8"?>\n<Playlist version="1" repeat="false" shuffle="true">\n'
          '  <Track>\n    <Uri>http://127.0.0.1:9/a.flac?x=1&amp;y=2</Uri>\n'
          '    <Metadata>&lt;DIDL-Lite&gt;&lt;/DIDL-Lite&gt;</Metadata>\n  </Track>\n'
          '  <Track><Uri>http://127.0.0.1:9/b.mp3</Uri><Metadata/></Track>\n</Playlist>\n')
    write("playlist_file", "empty-playlist", '<Playlist version="1" repeat="true" shuffle="false"/>')
    write("playlist_file", "cut-short",
          '<?xml version="1.0" encoding="utf-8"?>\n<Playlist version="1" repeat="false" shuffle="true">\n'
          '  <Track>\n    <Uri>http://127.0.0.1:9/a.flac</Uri>\n    <Meta')
    write("playlist_file", "wrong-version", '<Playlist version="2" repeat="true" shuffle="false"></Playlist>')


if __name__ == "__main__":
    shutil.rmtree(CORPUS, ignore_errors=True)
    sinkctss_seeds()
    openhome_seeds()
    playlist_sequence_seeds()
    read_list_seeds()
    text_seeds()
