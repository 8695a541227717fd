#include "tests/support/scene.h"

namespace tarqo {

Json Scene::serveLine(const std::string& line) {
  const Served served = server.serve(line);
  return served.response ? Json::parse(*served.response) : Json();
}

Json Scene::call(const std::string& method, const Json& args) {
  return serveLine(Json{{"id", 1}, {"method", method}, {"args", args}}.dump());
}

Json Scene::result(const std::string& method, const Json& args) {
  Json response = call(method, args);
  EXPECT_TRUE(response.contains("result")) << method << " answered " << response.dump();
  return response.contains("result") ? response["result"] : Json();
}

Json Scene::error(const std::string& method, const Json& args) {
  Json response = call(method, args);
  EXPECT_TRUE(response.contains("error")) << method << " answered " << response.dump();
  return response.contains("error") ? response["error"] : Json();
}

std::string Scene::failure(const std::string& method, const Json& args) {
  const Json caught = error(method, args);
  return caught.is_null()
             ? "no failure"
             : caught["code"].get<std::string>() + ": " + caught["message"].get<std::string>();
}

Json Scene::nodeNamed(const Json& observation, const std::string& name) {
  for (const Json& node : observation.at("snapshot").at("nodes")) {
    if (node.at("name") == name) {
      return node;
    }
  }
  return {};
}

void ConnectedScene::SetUp() { (void)result("connect", {{"bundleId", "com.example.Notes"}}); }

std::string ConnectedScene::idOf(const std::string& name, const Json& args) {
  const Json node = nodeNamed(observe(args), name);
  EXPECT_FALSE(node.is_null()) << "no node is called " << name;
  return node.is_null() ? "" : node.at("id").get<std::string>();
}

}  // namespace tarqo
