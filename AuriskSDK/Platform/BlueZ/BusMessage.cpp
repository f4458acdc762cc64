#include "AuriskSDK/Platform/BlueZ/BusMessage.h"

#include <systemd/sd-bus.h>

namespace aurisk::bluez {

namespace {

template <typename... Cases> struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <typename... Cases> Overloaded(Cases...) -> Overloaded<Cases...>;

// Reading

/// Reads from a message, until something in it is wrong.
class Reader {
public:
    explicit Reader(sd_bus_message* message)
        : _message(message)
    {
    }

    BusValues all()
    {
        BusValues values;
        while (isGood(sd_bus_message_at_end(_message, 1) == 0))
            values.push_back(value());
        return values;
    }

private:
    bool isGood(bool result = true) { return _isGood = _isGood && result; }

    BusValue value()
    {
        char type = 0;
        const char* contents = nullptr;
        if (!isGood(sd_bus_message_peek_type(_message, &type, &contents) > 0))
            return {};
        switch (type) {
        case 'b': return bool(basic<int>(type));
        case 'y': return basic<std::uint8_t>(type);
        case 'n': return basic<std::int16_t>(type);
        case 'q': return basic<std::uint16_t>(type);
        case 'i': return basic<std::int32_t>(type);
        case 'u': return basic<std::uint32_t>(type);
        case 'x': return basic<std::int64_t>(type);
        case 't': return basic<std::uint64_t>(type);
        case 's': return text(type);
        case 'o': return ObjectPath{ text(type) };
        case 'v': return variant(contents);
        case 'a': return arrayOf(contents ? contents : "");
        default: return skip(std::string(1, type));
        }
    }

    template <typename Wire> Wire basic(char type)
    {
        Wire wire{};
        isGood(sd_bus_message_read_basic(_message, type, &wire) > 0);
        return wire;
    }

    std::string text(char type)
    {
        const char* text = nullptr;
        return isGood(sd_bus_message_read_basic(_message, type, &text) > 0) && text ? text : "";
    }

    BusValue skip(const std::string& type)
    {
        isGood(sd_bus_message_skip(_message, type.c_str()) >= 0);
        return {};
    }

    /// Calls `inside` within a container; the library checks that it has read all of it.
    template <typename Inside> void within(char type, const std::string& contents, const Inside& inside)
    {
        if (!isGood(sd_bus_message_enter_container(_message, type, contents.c_str()) > 0))
            return;
        inside();
        if (isGood())
            isGood(sd_bus_message_exit_container(_message) >= 0);
    }

    BusValue variant(const std::string& contents)
    {
        BusValue inner;
        within('v', contents, [&] { inner = value(); });
        return inner;
    }

    template <typename ReadElement> void array(const std::string& elements, const ReadElement& readElement)
    {
        within('a', elements, [&] {
            while (_isGood && sd_bus_message_at_end(_message, 0) == 0)
                readElement();
        });
    }

    template <typename Map, typename ReadKey, typename ReadMapped>
    Map dictionary(const std::string& entry, const ReadKey& readKey, const ReadMapped& readMapped)
    {
        Map map;
        array("{" + entry + "}", [&] {
            within('e', entry, [&] {
                auto key = readKey();
                map.insert_or_assign(std::move(key), readMapped());
            });
        });
        return map;
    }

    BusDictionary properties()
    {
        return dictionary<BusDictionary>(
            "sv", [&] { return text('s'); }, [&] { return value(); });
    }

    BusInterfaces interfaces()
    {
        return dictionary<BusInterfaces>(
            "sa{sv}", [&] { return text('s'); }, [&] { return properties(); });
    }

    BusObjects objects()
    {
        return dictionary<BusObjects>(
            "oa{sa{sv}}", [&] { return text('o'); }, [&] { return interfaces(); });
    }

    CompanyData companyData()
    {
        const auto bytesOf = [](const BusValue& value) { return value.as<Data>() ? *value.as<Data>() : Data(); };
        return dictionary<CompanyData>(
            "qv", [&] { return basic<std::uint16_t>('q'); }, [&] { return bytesOf(value()); });
    }

    Data bytes()
    {
        const void* bytes = nullptr;
        std::size_t count = 0;
        if (!isGood(sd_bus_message_read_array(_message, 'y', &bytes, &count) >= 0) || count == 0)
            return {};
        const auto* first = static_cast<const std::uint8_t*>(bytes);
        return Data(first, first + count);
    }

    BusValue arrayOf(const std::string& elements)
    {
        if (elements == "y")
            return bytes();
        if (elements == "{sv}")
            return properties();
        if (elements == "{qv}")
            return companyData();
        if (elements == "{sa{sv}}")
            return interfaces();
        if (elements == "{oa{sa{sv}}}")
            return objects();
        if (elements == "s") {
            std::vector<std::string> texts;
            array(elements, [&] { texts.push_back(text('s')); });
            return texts;
        }
        if (elements == "o") {
            std::vector<ObjectPath> paths;
            array(elements, [&] { paths.push_back({ text('o') }); });
            return paths;
        }
        return skip("a" + elements);
    }

    sd_bus_message* _message;
    bool _isGood = true;
};

// Writing

/// Writes into a message; what the library refuses is remembered.
class Writer {
public:
    explicit Writer(sd_bus_message* message)
        : _message(message)
    {
    }

    bool isGood() const { return _isGood; }

    void append(const BusValue& value)
    {
        std::visit([this](const auto& one) { write(one); }, static_cast<const BusValue::variant&>(value));
    }

private:
    void check(int result) { _isGood = _isGood && result >= 0; }

    template <typename Inside> void within(char type, const std::string& contents, const Inside& inside)
    {
        check(sd_bus_message_open_container(_message, type, contents.c_str()));
        if (!_isGood)
            return;
        inside();
        check(sd_bus_message_close_container(_message));
    }

    template <typename Map, typename WriteEntry>
    void dictionary(const Map& map, const std::string& entry, const WriteEntry& writeEntry)
    {
        within('a', "{" + entry + "}", [&] {
            for (const auto& one : map)
                within('e', entry, [&] { writeEntry(one.first, one.second); });
        });
    }

    void variant(const BusValue& value)
    {
        within('v', signatureOf(value), [&] { append(value); });
    }

    static std::string signatureOf(const BusValue& value)
    {
        const Overloaded signature = {
            [](std::monostate) { return ""; },
            [](bool) { return "b"; },
            [](std::uint8_t) { return "y"; },
            [](std::int16_t) { return "n"; },
            [](std::uint16_t) { return "q"; },
            [](std::int32_t) { return "i"; },
            [](std::uint32_t) { return "u"; },
            [](std::int64_t) { return "x"; },
            [](std::uint64_t) { return "t"; },
            [](const std::string&) { return "s"; },
            [](const ObjectPath&) { return "o"; },
            [](const Data&) { return "ay"; },
            [](const std::vector<std::string>&) { return "as"; },
            [](const std::vector<ObjectPath>&) { return "ao"; },
            [](const BusDictionary&) { return "a{sv}"; },
            [](const CompanyData&) { return "a{qv}"; },
            [](const BusInterfaces&) { return "a{sa{sv}}"; },
            [](const BusObjects&) { return "a{oa{sa{sv}}}"; },
            [](const BusVariant&) { return "v"; },
        };
        return std::visit(signature, static_cast<const BusValue::variant&>(value));
    }

    template <typename Wire> void basic(char type, const Wire& wire)
    {
        check(sd_bus_message_append_basic(_message, type, &wire));
    }
    void text(char type, const std::string& text) { check(sd_bus_message_append_basic(_message, type, text.c_str())); }

    void write(std::monostate) { _isGood = false; }
    void write(bool value) { basic('b', int(value)); }
    void write(std::uint8_t value) { basic('y', value); }
    void write(std::int16_t value) { basic('n', value); }
    void write(std::uint16_t value) { basic('q', value); }
    void write(std::int32_t value) { basic('i', value); }
    void write(std::uint32_t value) { basic('u', value); }
    void write(std::int64_t value) { basic('x', value); }
    void write(std::uint64_t value) { basic('t', value); }
    void write(const std::string& value) { text('s', value); }
    void write(const ObjectPath& value) { text('o', value.text); }
    void write(const Data& value) { check(sd_bus_message_append_array(_message, 'y', value.data(), value.size())); }
    void write(const std::vector<std::string>& all)
    {
        within('a', "s", [&] {
            for (const auto& one : all)
                text('s', one);
        });
    }
    void write(const std::vector<ObjectPath>& all)
    {
        within('a', "o", [&] {
            for (const auto& one : all)
                text('o', one.text);
        });
    }
    void write(const BusDictionary& all)
    {
        dictionary(all, "sv", [&](const std::string& key, const BusValue& value) {
            text('s', key);
            variant(value);
        });
    }
    void write(const CompanyData& all)
    {
        dictionary(all, "qv", [&](std::uint16_t company, const Data& value) {
            basic('q', company);
            variant(value);
        });
    }
    void write(const BusInterfaces& all)
    {
        dictionary(all, "sa{sv}", [&](const std::string& name, const BusDictionary& properties) {
            text('s', name);
            write(properties);
        });
    }
    void write(const BusObjects& all)
    {
        dictionary(all, "oa{sa{sv}}", [&](const std::string& path, const BusInterfaces& interfaces) {
            text('o', path);
            write(interfaces);
        });
    }

    void write(const BusVariant& inner) { variant(*inner.value); }

    sd_bus_message* _message;
    bool _isGood = true;
};

} // namespace

BusValues readValues(sd_bus_message* message)
{
    sd_bus_message_rewind(message, 1);
    return Reader(message).all();
}

bool appendValues(sd_bus_message* message, const BusValues& values)
{
    Writer writer(message);
    for (const auto& value : values)
        writer.append(value);
    return writer.isGood();
}

} // namespace aurisk::bluez
