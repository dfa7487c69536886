#include "bench/Inputs.h"

#include <string>

namespace Bench {

std::string SettingsDocument(std::size_t bytes) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<setting set=\"Daubery\" filter=\"BristleDrag\" name=\"Evening &amp; Dusk\">\n";
  for (std::size_t group = 0; text.size() < bytes; ++group) {
    const std::string g = std::to_string(group);
    text += "  <group id=\"g" + g + "\" label=\"Group &quot;" + g + "&quot;\">\n";
    if (group % 4 == 0) text += "    <!-- tuned by hand, keep in sync with the preview -->\n";
    for (int param = 0; param < 8; ++param) {
      text += "    <param keyid=\"k" + std::to_string(param) + "\" type=\"float\" value=\"0." +
              std::to_string(group * 8 + param) + "\"/>\n";
    }
    text += "    <note>Soft &lt;edge&gt; &#x2014; blend " + g + "</note>\n  </group>\n";
  }
  return text + "</setting>";
}

std::string PackageDocument(std::size_t bytes) {
  std::u16string text =
      u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n"
      u"<oldstyle_setting filter=\"Tessellane\" name=\"Old\" set=\"Mendora\">\n"
      u"  <![CDATA[";
  for (std::size_t line = 0; 2 * text.size() < bytes; ++line) {
    text += u"Tessellane 1.2 tile=" + std::u16string(1, u'0' + line % 10) +
            u" grout=\u00E9\u00FC\u00BF \u00A7 0.25\r";
  }
  text += u"]]>\n</oldstyle_setting>";
  std::string file = "\xFF\xFE";
  for (char16_t unit : text) file += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
  return file;
}

std::string ReferencesDocument(std::size_t bytes) {
  std::string text = "<notes>";
  while (text.size() < bytes)
    text += "Tom &amp; Ann &lt;say&gt; &quot;hi&quot;&#10;it&apos;s &#x41;rt\n";
  return text + "</notes>";
}

std::string MimeDatabaseDocument(std::size_t bytes) {
  static const char* const comments[][2] = {
      {"", "settings file"},
      {"de", "Einstellungsdatei"},
      {"fr", "fichier de r\xC3\xA9glages"},
      {"ja", "\xE8\xA8\xAD\xE5\xAE\x9A\xE3\x83\x95\xE3\x82\xA1\xE3\x82\xA4\xE3\x83\xAB"},
      {"ru",
       "\xD1\x84\xD0\xB0\xD0\xB9\xD0\xBB "
       "\xD0\xBD\xD0\xB0\xD1\x81\xD1\x82\xD1\x80\xD0\xBE\xD0\xB5\xD0\xBA"},
      {"el", "\xCE\xB1\xCF\x81\xCF\x87\xCE\xB5\xCE\xAF\xCE\xBF"},
  };
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<mime-info xmlns=\"http://example.com/shared-mime-info\">\n";
  for (std::size_t type = 0; text.size() < bytes; ++type) {
    const std::string name = "application/x-kind-" + std::to_string(type);
    text += "  <mime-type type=\"" + name + "\">\n";
    for (const auto& comment : comments) {
      text += std::string("    <comment") + (*comment[0] ? " xml:lang=\"" : "") + comment[0] +
              (*comment[0] ? "\"" : "") + ">" + comment[1] + " " + std::to_string(type) +
              "</comment>\n";
    }
    text += "    <glob pattern=\"*.k" + std::to_string(type) +
            "\"/>\n"
            "    <magic priority=\"50\">\n"
            "      <match type=\"string\" value=\"KIND" +
            std::to_string(type) + "\" offset=\"0\"/>\n    </magic>\n  </mime-type>\n";
  }
  return text + "</mime-info>\n";
}

std::string NestedDocument(std::size_t depth) {
  std::string text;
  for (std::size_t level = 0; level < depth; ++level) text += "<e>";
  for (std::size_t level = 0; level < depth; ++level) text += "</e>";
  return text;
}

}  // namespace Bench
