// Holds answers of the control API against its description. Stricter than the description asks for:
// a member that it does not name is a fault, for whoever reads it could not know of it.
import assert from 'node:assert/strict';
import Ajv from 'ajv/dist/2020.js';

/** Objects that carry the service's own members through. */
const open = new Set(['mediaData']);

function closed(schema, name = '') {
  if (Array.isArray(schema)) return schema.map((each) => closed(each));
  if (schema === null || typeof schema !== 'object') return schema;
  const entries = Object.entries(schema).map(([key, value]) => [key, closed(value, key)]);
  const result = Object.fromEntries(entries);
  const named = schema.type === 'object' && schema.properties && !open.has(name);
  return named ? { additionalProperties: false, ...result } : result;
}

export class Description {
  constructor(document) {
    this.document = document;
    this.ajv = new Ajv({ strict: false, validateFormats: false, allErrors: true });
    this.ajv.addSchema({ $id: 'api', components: closed(document.components) });
    this.told = new Set();
  }

  validate(schema, value, where) {
    const text = JSON.stringify(closed(schema)).replaceAll('"#/components', '"api#/components');
    const check = this.ajv.compile(JSON.parse(text));
    const right = check(value);
    const faults = (check.errors ?? []).map(
      ({ instancePath, message, params }) =>
        `${instancePath} ${message} ${JSON.stringify(params)}`,
    );
    assert.ok(right, `${where}: ${faults.join('; ')}\n${JSON.stringify(value).slice(0, 600)}`);
  }

  /** Holds a record, such as an event's data, against a schema of the description by its name. */
  record(name, value, where) {
    this.validate({ $ref: `#/components/schemas/${name}` }, value, where);
  }

  resolve(part) {
    if (!part?.$ref) return part;
    return part.$ref
      .slice(2)
      .split('/')
      .reduce((at, key) => at[key], this.document);
  }

  operation(method, path) {
    const paths = Object.entries(this.document.paths);
    const pattern = (template) => new RegExp(`^${template.replace(/\{\w+\}/g, '[^/]+')}$`);
    const [, item] = paths.find(([template]) => pattern(template).test(path)) ?? [];
    const operation = item?.[method.toLowerCase()];
    assert.ok(operation, `${method} ${path} is not described`);
    return operation;
  }

  /** Status, media type and body of a fetched answer. */
  async answer(method, path, response) {
    const operation = this.operation(method, path);
    this.told.add(operation.operationId);
    const where = `${operation.operationId} ${response.status}`;
    const described = this.resolve(
      operation.responses[response.status] ?? operation.responses.default,
    );
    const type = response.headers.get('content-type').split(';')[0];
    const fits = ([name]) => name === type || name === type.replace(/\/.*/, '/*');
    const [, content] = Object.entries(described.content).find(fits) ?? [];
    assert.ok(content, `${where}: ${type} is not described`);
    if (!type.endsWith('json')) return response.arrayBuffer();
    const body = await response.json();
    if (operation.operationId !== 'getDescription') this.validate(content.schema, body, where);
    return body;
  }

  /** The operations of which no answer was seen. */
  untold() {
    const all = Object.values(this.document.paths).flatMap((item) =>
      Object.values(item).map((operation) => operation.operationId),
    );
    return all.filter((name) => !this.told.has(name));
  }
}
